# A first look at `big`: scripts/run examples/tour.tcl
package require omrel_bignum

puts "The product of two nine-digit numbers: [big * 123456789 987654321]"

# Operands are texts of up to 6,499 digits, so nothing is rounded.
set googol 1[string repeat 0 100]
puts "A googol less one: [big - $googol 1]"
puts "A googol by 7: [big / $googol 7], remainder [big % $googol 7]"

# Division truncates toward zero; the remainder has the dividend's sign.
puts "-7 by 2: [big / -7 2], remainder [big % -7 2]"

# Comparisons answer 1 or 0, so they serve as conditions. The remainder of a negative multiple is -0,
# which is not 0; adding 0 makes it so.
proc gcd {a b} {
    while {[big != $b 0]} {
        lassign [list $b [big + [big % $a $b] 0]] a b
    }
    big abs $a
}
puts "gcd of 2^128 - 1 and 2^96 - 1: [gcd 340282366920938463463374607431768211455 \
    79228162514264337593543950335], of -12 and 18: [gcd -12 18]"

# Fractions are for reading. What must be exact is counted in a unit that is small enough: in cents.
set cents 0
foreach price {1999 4950 5} { big += cents $price }
puts "19.99 + 49.50 + 0.05 = [string range [big fdiv $cents 100] 0 end-16]"

# What goes wrong is a Tcl error that says which command and word it was.
if {[catch {big / 1 0} message options]} {
    puts "big / 1 0 failed: [dict get $options -errorcode]"
}
