# What is not among the words, in a few lines each: common divisors, powers and inverses modulo a
# number, primes, digit sums, hexadecimal digits. scripts/run examples/numbers.tcl shows them; a
# script that sources this file has the procs.
package require omrel_bignum

# The greatest common divisor, which has no sign. Adding 0 makes 0 of the remainder -0.
proc gcd {a b} {
    while {[big != $b 0]} { lassign [list $b [big + [big % $a $b] 0]] a b }
    big abs $a
}

# a to the power e, modulo m: squares a once for each bit of e, and multiplies where the bit is 1.
proc mod_power {a e m} {
    for {set result 1} {[big > $e 0]} {set e [big div2 $e]} {
        if {![big is_even $e]} { set result [big % [big * $result $a] $m] }
        set a [big % [big * $a $a] $m]
    }
    return $result
}

# The x with a * x = 1 modulo m, by Euclid's algorithm; a and m have no common factor.
proc mod_inverse {a m} {
    lassign [list $m 0 $a 1] r x next_r next_x
    while {[big != $next_r 1]} {
        set q [big / $r $next_r]
        lassign [list $next_r $next_x [big % $r $next_r] [big - $x [big * $q $next_x]]] \
            r x next_r next_x
    }
    expr {[big < $next_x 0] ? [big + $next_x $m] : $next_x}
}

# Whether n is prime, by Miller and Rabin's test with the first 13 primes as bases: certain below
# 3.3 * 10^24 (Sorenson and Webster, 2015), and beyond it wrong for numbers made to deceive it only.
proc is_prime {n} {
    set bases {2 3 5 7 11 13 17 19 23 29 31 37 41}
    if {[big < $n 2]} { return 0 }
    foreach base $bases {
        if {[big == [big % $n $base] 0]} { return [big == $n $base] }
    }
    for {set d [big - $n 1]; set twos 0} {[big is_even $d]} {incr twos} { set d [big div2 $d] }
    foreach base $bases {
        set x [mod_power $base $d $n]
        for {set i 1} {$i < $twos && [big > $x 1] && [big < $x [big - $n 1]]} {incr i} {
            set x [big % [big * $x $x] $n]
        }
        if {[big != $x [big - $n 1]] && ($i > 1 || [big != $x 1])} { return 0 }
    }
    return 1
}

proc digit_sum {number} { ::tcl::mathop::+ {*}[split [string trimleft $number -] {}] }

# Hexadecimal digits, four bits each, of a number that is not negative; and back.
proc to_hex {number} {
    set bits [big inttobin $number -noprefix]
    set bits [string repeat 0 [expr {-[string length $bits] % 4}]]$bits
    join [lmap four [regexp -all -inline .... $bits] { format %x 0b$four }] {}
}
proc from_hex {digits} {
    big bintoint [join [lmap digit [split $digits {}] { format %04b 0x$digit }] {}]
}

if {[info script] ne $argv0} return

set m [big - [big pow2 127] 1]
set a 123456789012345678901234567890
set hex [to_hex $a]
set inverse [mod_inverse $a $m]
puts "gcd of -12 and 18: [gcd -12 18]"
puts "a = $a, its digits' sum [digit_sum $a], in hexadecimal $hex"
puts "a^1000 modulo 2^127 - 1: [mod_power $a 1000 $m]\n1/a modulo 2^127 - 1: $inverse"
puts "2^127 - 1 is [expr {[is_prime $m] ? {} : {not }}]prime, 2^129 - 1 is\
    [expr {[is_prime [big - [big pow2 129] 1]] ? {} : {not }}]prime"

# What must hold, in Tcl's own integers.
foreach {holds what} [list \
    [expr {[gcd -12 18] == 6 && [gcd 0 -7] == 7 && [gcd 17 5] == 1}] "greatest common divisors" \
    [expr {[mod_power 7 65537 $m] == [mod_power [expr {7 ** 16 % $m}] 4096 $m] * 7 % $m}] "powers" \
    [expr {$a * $inverse % $m == 1}] "inverses" \
    [expr {[lmap n {-7 0 1 2 3 4 41 43 561 1681 1763 3215031751} {is_prime $n}] eq \
        {0 0 0 1 1 0 1 1 0 0 0 0}}] "primes" \
    [expr {[digit_sum -909] == 18}] "digit sums" \
    [expr {$hex eq [format %llx $a] && [from_hex $hex] == $a && [to_hex 0] == 0}] "hexadecimal" \
] {
    if {!$holds} { error "$what are wrong" }
}
