# RSA with two primes far too small for real use: scripts/run examples/rsa.tcl ?MESSAGE?
package require omrel_bignum

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

# A text as one number, eight bits a byte, and back.
proc number_of {text} {
    binary scan [encoding convertto utf-8 $text] B* bits
    big bintoint $bits
}
proc text_of {number} {
    set bits [big inttobin $number -noprefix]
    set bits [string repeat 0 [expr {-[string length $bits] % 8}]]$bits
    encoding convertfrom utf-8 [binary format B* $bits]
}

set p [big - [big pow2 61] 1]
set q [big - [big pow2 89] 1]
set n [big * $p $q]
set public 65537
set private [mod_inverse $public [big * [big -- $p] [big -- $q]]]
puts "n       $n\npublic  $public\nprivate $private"

set text [lindex [concat $argv {{Meet me at noon}}] 0]
set message [number_of $text]
if {$text eq "" || [big >= $message $n]} { error "the message is empty or too long for n" }
set sealed [mod_power $message $public $n]
set opened [mod_power $sealed $private $n]
puts "message $message\nsealed  $sealed\nopened  $opened: [text_of $opened]"

# What must hold, in Tcl's own integers.
if {$public * $private % (($p - 1) * ($q - 1)) != 1} { error "the keys do not belong together" }
if {[text_of $opened] ne $text} { error "the message came back changed" }
