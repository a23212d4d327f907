# The regression guard: words and whole scripts that have become slow beside GMP, by the ratios of
# one run. To renew the table: scripts/bench --tcl --quick --least, on a quiet machine with AVX2.

set TOLERANCE 0.8
set ATTEMPTS 3
set MARGIN 0.97        ;# what the table keeps of the ratios it is made from
set WITHOUT_AVX2 0.75  ;# of the ratios that processors with AVX2 reach

# Least ratio of each word over its cases and ways, and the ratio of each whole script, the worst of
# a few runs.
set LEAST {
    + 1.28    - 1.26    * 1.20    / 1.13    % 1.00    == 1.18    < 1.32    max 1.36    fdiv 1.12
    mean 1.34    fmod 1.07    ** 1.30    pow2 1.13    fact 1.07    fib 1.06    sqrt 1.21
    inttobin 1.15    bintoint 1.18    & 1.15    | 1.13    ^ 1.15    ~ 1.23    << 1.16    >> 1.19
    div2 1.32    div10 1.43    ++ 0.99    += 1.10    *= 1.07    &= 0.89    |= 1.13    != 1.27
    > 1.27    <= 1.30    >= 1.33    && 1.33    || 1.16    min 1.23    pow 1.14    abs 1.15
    ! 1.16    is_even 1.09    -- 0.86    -= 0.89    /= 0.90    ^= 0.96
    {RSA, 1,024 bits: seal and open} 3.81
    {5,000 digits of pi} 20.53
    {1000! by *=} 7.83
    {1,000 Fibonacci sums} 2.48
    {Lucas-Lehmer test of 2^2203 - 1} 7.32
}

proc processor_factor {} {
    if {[catch {open /proc/cpuinfo} file]} { return $::WITHOUT_AVX2 }
    expr {[regexp {\yavx2\y} [read $file][close $file]] ? 1.0 : $::WITHOUT_AVX2}
}

# What a key of the measurements is called: a case by its word, a whole script by its name.
proc group_of {key} { expr {[dict exists $::SCRIPTS $key] ? $key : [lindex $key 0 0]} }

# Whether everything keeps its part of its figure. What does not is measured again, a few times at
# most; the best counts and stays in the table. What fails all the same is reported.
proc holds {keys scripts} {
    set factor [expr {$::TOLERANCE * [processor_factor]}]
    set slow [concat $keys $scripts]
    for {set attempt 0} {$slow ne ""} {incr attempt} {
        set slow [lmap key $slow {
            if {[ratio $key] >= [dict get $::LEAST [group_of $key]] * $factor} continue
            set key
        }]
        if {$attempt == $::ATTEMPTS} break
        foreach key $slow {
            foreach - {1 2 3 4 5} {
                if {$key in $scripts} { measure_script $key } else { measure $key }
            }
        }
    }
    foreach key $slow {
        puts stderr [format "%s: %.2f times the speed of GMP, expected %.2f or more" \
            [string range $key 0 60] [ratio $key] \
            [expr {[dict get $::LEAST [group_of $key]] * $factor}]]
    }
    expr {$slow eq ""}
}

# Prints the table of least ratios, as its source, with what these rows show.
proc print_least {keys scripts} {
    foreach key [concat $keys $scripts] { dict lappend ratios [group_of $key] [ratio $key] }
    puts "set LEAST {"
    dict for {group all} $ratios {
        set entry [list $group [format %.2f [expr {[tcl::mathfunc::min {*}$all] * $::MARGIN}]]]
        puts -nonewline "    $entry[expr {[incr count] % 6 == 0 || $group in $scripts ? "\n" : {}}]"
    }
    puts "}"
}
