# Times `big` inside Tcl beside the same commands written with GMP, gmp::+ and so on, both loaded
# into one tclsh. scripts/bench --tcl builds what is needed and calls this:
#
#   tclsh compare.tcl GMP-EXTENSION CASES ?option ...?
#
#   --quick             a short run, without expr
#   --word WORD         the cases of one word, and no whole scripts
#   --json FILE         the table as JSON, too
#   --column NAME FILE  another column: seconds per call or "-", one line a case
#   --check             fails when a word or a script has become slow (see guard.tcl)
#   --least             ends with the table by which --check judges
#
# A case is called in four ways: from a proc with local variables or in the global scope, with the
# same objects as the call before (`used`) or with others of the same texts (`fresh`). In each way
# `big` and GMP take turns, some milliseconds each, all cases in a round, and the best of the rounds
# counts. Answers are compared before they are timed. The variable of an updating word is set anew
# at each call, or at each eighth where the answer stays as long, which is timed, too.
#
# Tcl's expr is timed in procs in two ways: with a fresh text for each operand of each call, up to
# the text of the answer (`expr`), and with numbers that Tcl has already read, without a text
# (`kept`).
package require omrel_bignum

set here [file dirname [file normalize [info script]]]
source [file join $here scripts.tcl]
source [file join $here guard.tcl]

set WAYS {{local used} {local fresh} {global used} {global fresh}}
set CALLS 8  ;# in one turn of a timed loop
set STAYING {++ -- += -= &= |= ^=}
set UPDATING [list {*}$STAYING *= /=]

# Words with the cases of another one, which the case file has.
set TWINS {
    != == > < <= < >= < && < || < min max pow ** abs div10 ! div10 is_even div10 -- ++ -= += /= /
    &= & |= | ^= ^
}

# What expr has in place of a word.
set EXPRESSIONS {
    + {$0 + $1} - {$0 - $1} * {$0 * $1} / {$0 / $1} % {$0 % $1} ** {$0 ** $1} pow {$0 ** $1}
    == {$0 == $1} != {$0 != $1} < {$0 < $1} > {$0 > $1} <= {$0 <= $1} >= {$0 >= $1}
    & {$0 & $1} | {$0 | $1} ^ {$0 ^ $1} << {$0 << $1} >> {$0 >> $1} ~ {~$0} ! {!$0}
    && {$0 && $1} || {$0 || $1} max {max($0, $1)} min {min($0, $1)} abs {abs($0)}
    sqrt {isqrt($0)} div2 {$0 >> 1} div10 {$0 / 10} pow2 {1 << $0}
}

# --- cases --------------------------------------------------------------------------------------

# Lists {word size operands}, those of the file first, as in its order columns are.
proc read_cases path {
    set file [open $path]
    foreach line [split [string trimright [read $file][close $file]] \n] {
        lassign [split $line \t] size call
        lappend cases [list [lindex $call 0] $size [lrange $call 1 end]]
    }
    foreach {word original} $::TWINS {
        foreach case [lsearch -all -inline -index 0 -exact $cases $original] {
            lappend cases [lreplace $case 0 0 $word]
        }
    }
    foreach case [lsearch -all -inline -index 0 -exact $cases ++] {
        lassign $case - size operands
        lappend cases [list += "$size x 1" [list {*}$operands 1]]
    }
    return $cases
}

proc command_of {who word} { expr {$who eq "big" ? "big $word" : "gmp::$word"} }

# CALLS calls of a case's word. Variable "i j" has operand i for call j.
proc calls_of {who word count} {
    for {set j 0} {$j < $::CALLS} {incr j} {
        set call [command_of $who $word]
        for {set i 0} {$i < $count} {incr i} { append call " \${$i $j}" }
        if {$word in $::UPDATING} {
            set call [string map [list "\${0 $j}" x] $call]
            if {$j == 0 || $word ni $::STAYING} { set call "set x \${0 $j}; $call" }
        }
        append calls "$call\n"
    }
    return $calls
}

# A proc that makes the calls in each of n turns; it takes n and the values of `names`. Returns
# microseconds.
proc make_timer {name scope names calls} {
    set loop "for {set turn 0} {\$turn < \$turns} {incr turn} { $calls }"
    if {$scope eq "local"} {
        set take "lassign \$args turns $names"
    } else {
        set take "uplevel #0 \[list lassign \$args turns $names]"
        set loop "uplevel #0 {$loop}"
    }
    proc $name args "$take
        set begin \[clock microseconds]
        $loop
        expr {\[clock microseconds] - \$begin}"
}

# The names and the values of the operands: one object for all calls, or one for each.
proc names_of {count} {
    for {set i 0} {$i < $count} {incr i} {
        for {set j 0} {$j < $::CALLS} {incr j} { lappend names [list $i $j] }
    }
    return $names
}
proc values_of {operands age} {
    foreach text $operands {
        set texts [copies $text $::CALLS]
        lappend values {*}[expr {$age eq "used" ? [lrepeat $::CALLS [lindex $texts 0]] : $texts}]
    }
    return $values
}

# As many objects of the text, none of them used before.
proc copies {text count} { lrange [split [string repeat "$text " $count]] 0 end-1 }

# The answer, and the variable that an updating word has left.
proc answer_of {who word operands} {
    set x [lindex $operands 0]
    if {$word in $::UPDATING} { lset operands 0 x }
    list [{*}[command_of $who $word] {*}$operands] $x
}

# --- measuring ----------------------------------------------------------------------------------

# Each case in each way is a key {case way}; best($key,$who) has microseconds a call.
proc prepare {key} {
    lassign $key case way
    lassign $case word size operands
    foreach who {big gmp} {
        set count [llength $operands]
        make_timer [list $who $key] [lindex $way 0] [names_of $count] [calls_of $who $word $count]
        set ::best($key,$who) Inf
    }
    if {[answer_of big $word $operands] ne [answer_of gmp $word $operands]} {
        error "big $word ($size): [answer_of big $word $operands]"
    }
    set ::values($key) [values_of $operands [lindex $way 1]]
    foreach who {big gmp} {
        set times [lmap - {1 2 3 4} { [list $who $key] 1 {*}$::values($key) }]
        set once [tcl::mathfunc::min {*}$times]
        set ::turn_count($key,$who) [expr {max($::turn_time / max($once, 1), 1)}]
    }
}

proc measure {key} {
    foreach who {big gmp} {
        set turns $::turn_count($key,$who)
        set spent [[list $who $key] $turns {*}$::values($key)]
        set ::best($key,$who) [expr {min($::best($key,$who), double($spent) / $turns / $::CALLS)}]
    }
}

proc ratio {key} { expr {$::best($key,gmp) / $::best($key,big)} }

# Times of expr for a case, in microseconds a call: {fresh kept}, or nothing, as where there is a
# width. Each fresh text is used once.
proc time_expr {case} {
    lassign $case word - operands
    if {![dict exists $::EXPRESSIONS $word] || [llength $operands] > 2} return
    set expression "expr {[dict get $::EXPRESSIONS $word]}"
    set names [lrange {0 1} 0 [llength $operands]-1]
    make_timer expr_kept local $names [string repeat "$expression\n" $::CALLS]
    set lists [lmap i $names { string cat all$i }]
    set pairs [join [lmap i $names { string cat "$i \$all$i" }]]
    make_timer expr_fresh local $lists "foreach $pairs { string length \[$expression] }"
    set texts [lmap text $operands { copies $text 2 }]
    set once [expr {max([expr_fresh 1 {*}$texts] / 2, 1)}]
    set count [expr {min(max($::turn_time / $once, 1), 1000)}]
    set turns [expr {max($::turn_time / max([expr_kept 1 {*}$operands], 1), 1)}]
    foreach - {1 2 3} {
        set texts [lmap text $operands { copies $text $count }]
        lappend fresh [expr {double([expr_fresh 1 {*}$texts]) / $count}]
        lappend kept [expr {double([expr_kept $turns {*}$operands]) / $turns / $::CALLS}]
    }
    return [list [tcl::mathfunc::min {*}$fresh] [tcl::mathfunc::min {*}$kept]]
}

# --- reporting ----------------------------------------------------------------------------------

proc least_and_mean {ratios} {
    foreach ratio $ratios { lappend logs [expr {log($ratio)}] }
    list [tcl::mathfunc::min {*}$ratios] [expr {exp([tcl::mathop::+ {*}$logs] / [llength $logs])}]
}

# Times in ns.
proc print_rows {cases} {
    puts [format "%-9s %-12s%s %12s %12s" word digits \
        [join [lmap way $::WAYS { format "  %12s %9s %6s" $way GMP ratio }] {}] "expr fresh" kept]
    foreach case $cases {
        lassign $case word size
        set line [format "%-9s %-12s" $word $size]
        foreach way $::WAYS {
            set key [list $case $way]
            append line [format "  %12.1f %9.1f %6.2f" [expr {$::best($key,big) * 1e3}] \
                [expr {$::best($key,gmp) * 1e3}] [ratio $key]]
        }
        foreach time [dict get $::expr_times $case] {
            append line [format " %12.1f" [expr {$time * 1e3}]]
        }
        puts $line
    }
}

# Adds a ratio to a column of the summary, for a word or a way and for all.
proc collect {column group ratio} {
    foreach name [list $group all] { dict lappend ::ratios [list $name $column] $ratio }
}

# How many times as long as `big` the others take.
proc print_summary {cases} {
    foreach case $cases {
        lassign $case word
        foreach way $::WAYS {
            set ratio [ratio [list $case $way]]
            collect GMP $word $ratio
            dict lappend ::ratios [list $way GMP] $ratio
        }
        foreach time [dict get $::expr_times $case] column {fresh kept} age {fresh used} {
            if {$time eq ""} continue
            collect $column $word [expr {$time / $::best([list $case [list local $age]],big)}]
        }
    }
    puts "\nspeed of big, the other's being 1: least and geometric mean"
    puts [format "%-13s %8s %8s %10s %8s %8s %8s" word GMP mean "expr fresh" mean kept mean]
    foreach group [list {*}[lsort -unique [lsearch -all -inline -index 0 -subindices $cases *]] \
        {*}$::WAYS all] {
        set line [format %-13s $group]
        foreach {column width} {GMP 8 fresh 10 kept 8} {
            if {[dict exists $::ratios [list $group $column]]} {
                set numbers [least_and_mean [dict get $::ratios [list $group $column]]]
                append line [format " %*.2f %8.2f" $width {*}$numbers]
            } else {
                append line [format " %*s %8s" $width - -]
            }
        }
        puts $line
    }
}

proc print_scripts {} {
    if {$::SCRIPTS eq ""} return
    puts "\n[format "%-46s %12s %12s %8s" {whole script} {big ms} {GMP ms} ratio]"
    dict for {name -} $::SCRIPTS {
        puts [format "%-46s %12.2f %12.2f %8.2f" $name [expr {$::best($name,big) / 1e3}] \
            [expr {$::best($name,gmp) / 1e3}] [ratio $name]]
    }
}

proc write_json {path cases columns} {
    set file [open $path w]
    foreach case $cases {
        set times [list big $::best([list $case {local fresh}],big) \
            gmp $::best([list $case {local fresh}],gmp)]
        foreach time [dict get $::expr_times $case] name {expr kept} { lappend times $name $time }
        dict for {name column} $columns {
            set seconds [lindex $column [lsearch -exact $::cases_of_file $case]]
            if {[string is double -strict $seconds]} { lappend times $name [expr {$seconds * 1e6}] }
        }
        set row [format {"word": "%s", "digits": "%s"} {*}[lrange $case 0 1]]
        foreach {name time} $times {
            if {$time ne ""} { append row [format {, "%s_ns": %.1f} $name [expr {$time * 1e3}]] }
        }
        lappend rows "  {$row}"
    }
    puts $file "\[\n[join $rows ",\n"]\n]"
    close $file
}

# --- the run ------------------------------------------------------------------------------------

set rounds 15
set turn_time 4000  ;# microseconds
set with_expr 1
set chosen {}
set columns {}
set json {}
set check 0
set least 0
set arguments [lassign $argv extension case_file]
while {$arguments ne ""} {
    set arguments [lassign $arguments option]
    switch -- $option {
        --quick { lassign {5 1500 0} rounds turn_time with_expr }
        --word { set arguments [lassign $arguments chosen] }
        --json { set arguments [lassign $arguments json] }
        --column {
            set arguments [lassign $arguments name path]
            set file [open $path]
            dict set columns $name [read $file][close $file]
        }
        --check { set check 1 }
        --least { set least 1 }
        default { error "unknown option $option" }
    }
}

load $extension Gmp
set cases [read_cases $case_file]
set cases_of_file $cases
if {$chosen ne ""} {
    set cases [lsearch -all -inline -index 0 -exact $cases $chosen]
    set SCRIPTS {}
    if {$cases eq ""} { error "no cases of $chosen" }
}
foreach case $cases {
    foreach way $WAYS { lappend keys [list $case $way] }
}
foreach key $keys { prepare $key }
dict for {name script} $SCRIPTS { prepare_script $name $script }
for {set round 0} {$round < $rounds} {incr round} {
    foreach key $keys { measure $key }
    foreach name [dict keys $SCRIPTS] { measure_script $name }
}
foreach case $cases { dict set expr_times $case [if {$with_expr} { time_expr $case }] }
set passed [expr {!$check || [holds $keys [dict keys $SCRIPTS]]}]
print_rows $cases
print_summary $cases
print_scripts
if {$json ne ""} { write_json $json $cases $columns }
if {$least} { print_least $keys [dict keys $SCRIPTS] }
exit [expr {!$passed}]
