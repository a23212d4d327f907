# RSA with two primes far too small for real use: scripts/run examples/rsa.tcl ?MESSAGE?
package require omrel_bignum

# mod_power and mod_inverse
source [file join [file dirname [info script]] numbers.tcl]

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
