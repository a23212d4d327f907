# The regression guard: words and whole scripts that have become slow beside GMP, by the ratios of
# one run. To renew the table: scripts/bench --tcl --quick --least, on a quiet machine with AVX2.

set TOLERANCE 0.8
set ATTEMPTS 3
set MARGIN 0.97        ;# what the table keeps of the ratios it is made from
set WITHOUT_AVX2 0.75  ;# of the ratios that processors with AVX2 reach

# Least ratio of each word over its cases and ways, and the ratio of each whole script, the worst of
# a few runs, some of them short of a quiet machine.
set LEAST {
    + 0.85    - 1.18    * 0.95    / 0.94    % 0.71    == 0.86    < 1.16    max 1.01    fdiv 0.90
    mean 1.23    fmod 0.67    ** 1.05    pow2 0.93    fact 0.93    fib 0.95    sqrt 1.02
    inttobin 0.91    bintoint 0.95    & 1.03    | 0.97    ^ 1.01    ~ 1.06    << 0.93    >> 1.02
    div2 1.07    div10 1.10    ++ 0.84    += 0.88    *= 0.92    &= 0.75    |= 0.84    != 0.86
    > 1.16    <= 1.17    >= 0.99    && 1.14    || 0.99    min 1.10    pow 1.01    abs 0.98
    ! 1.02    is_even 0.79    -- 0.83    -= 0.82    /= 0.79    ^= 0.75
    {RSA, 1,024 bits: seal and open} 3.81
    {5,000 digits of pi} 17.12
    {1000! by *=} 7.68
    {1,000 Fibonacci sums} 2.48
    {Lucas-Lehmer test of 2^2203 - 1} 5.77
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
