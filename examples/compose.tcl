# How `big` goes together with the rest of Tcl, and when Tcl's own integers are the better choice:
# scripts/run examples/compose.tcl
package require omrel_bignum

# --- procs: the words are arguments like any other ----------------------------------------------

# The values put together two by two: fold * {1 2 3} is 6.
proc fold {word values} {
    set result [lindex $values 0]
    foreach value [lrange $values 1 end] { set result [big $word $result $value] }
    return $result
}
set primes {2 3 5 7 11 13 17 19 23 29 31 37 41 43 47 53 59 61 67 71}
puts "product of the first 20 primes: [fold * $primes], the largest: [fold max $primes]"

# --- commands of one's own ----------------------------------------------------------------------

# Short names for what a script does often.
interp alias {} mul {} big *
interp alias {} double {} big * 2
puts "mul 12 34: [mul 12 34], double 21: [double 21]"

# An ensemble gathers words and procs under one command, and refuses all others.
namespace eval ratio {
    proc plus {a b c d} { reduce [big + [big * $a $d] [big * $c $b]] [big * $b $d] }
    proc reduce {a b} { set d [gcd $a $b]; list [big / $a $d] [big / $b $d] }
    proc gcd {a b} { expr {[big == $b 0] ? [big abs $a] : [gcd $b [big + [big % $a $b] 0]]} }
    namespace ensemble create -map {
        plus plus reduce reduce decimal {::big fdiv} mean {::big mean}
    }
}
set sum {0 1}
for {set k 1} {$k <= 30} {incr k} { set sum [ratio plus {*}$sum 1 $k] }
puts "1 + 1/2 + ... + 1/30 = [join $sum /] = [ratio decimal {*}$sum]"

# --- expr ---------------------------------------------------------------------------------------

# A function of expr's own: its answer goes on as any integer.
proc ::tcl::mathfunc::fact {n} { big fact $n }
puts "30! / (20! * 10!) = [expr {fact(30) / (fact(20) * fact(10))}]"

# --- which of the two? --------------------------------------------------------------------------

# Runs both scripts, which must agree, and prints what one run of each takes.
proc compare {what big expr why} {
    if {[uplevel 1 $big] ne [uplevel 1 $expr]} { error "$what: the answers differ" }
    foreach script [list $big $expr] {
        uplevel 1 $script
        lappend times [lindex [uplevel 1 [list time $script 20]] 0]
    }
    puts [format "%-36s %9.1f us %9.1f us   %s" $what {*}$times $why]
}

# A number as it comes from a file or a user: text that expr has not seen before.
proc text {number} { string range " $number" 1 end }

# The power of a number modulo another, by squares; written with both.
proc big_power {a e m} {
    for {set result 1} {$e > 0} {set e [expr {$e / 2}]} {
        if {$e % 2} { set result [big % [big * $result $a] $m] }
        set a [big % [big * $a $a] $m]
    }
    return $result
}
proc expr_power {a e m} {
    for {set result 1} {$e > 0} {set e [expr {$e / 2}]} {
        if {$e % 2} { set result [expr {$result * $a % $m}] }
        set a [expr {$a * $a % $m}]
    }
    return $result
}

proc big_sum {n} { for {set sum 0; set i 1} {$i <= $n} {incr i} { big += sum $i }; return $sum }
proc expr_sum {n} { for {set sum 0; set i 1} {$i <= $n} {incr i} { incr sum $i }; return $sum }

proc expr_factorial {n} {
    for {set product 1} {$n > 1} {incr n -1} { set product [expr {$product * $n}] }
    return $product
}

set a [string repeat 1234567890 300]
set b [string repeat 9876543210 300]
set m [string range $a 0 39]1
puts "\n[format "%-36s %9s    %9s" "" big expr]"
compare "product, 3000 by 3000 digits" {big * [text $a] [text $b]} {expr {[text $a] * [text $b]}} \
    "long texts in, long text out: big"
compare "square root of 3000 digits" {big sqrt [text $a]} {expr {isqrt([text $a])}} \
    "the same"
compare "comparison of 3000 digits" {big < [text $a] [text $b]} {expr {[text $a] < [text $b]}} \
    "the same"
compare "1000!" {big fact 1000} {string cat [expr_factorial 1000]} \
    "a word for all of the work: big"
compare "7 to the 65537, modulo 41 digits" {big_power 7 65537 $m} {expr_power 7 65537 $m} \
    "many short steps: expr"
compare "sum of 1 to 1000" {big_sum 1000} {expr_sum 1000} \
    "numbers of one word: expr"
