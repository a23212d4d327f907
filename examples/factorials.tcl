# A table of factorials, with how many digits each has and how many zeros it ends in:
# scripts/run examples/factorials.tcl
package require omrel_bignum

# A number of any length in a few places: the first digits and the power of ten.
proc short {number} {
    set digits [string length $number]
    if {$digits <= 28} { return $number }
    return "[string index $number 0].[string range $number 1 11]... * 10^[expr {$digits - 1}]"
}

proc ending_zeros {number} {
    expr {[string length $number] - [string length [string trimright $number 0]]}
}

puts [format "%4s  %-28s %6s %5s" n n! digits zeros]
set product 1
for {set n 1} {$n <= 1000} {incr n} {
    set product [expr {$product * $n}]
    if {$n > 25 && $n ni {30 40 50 100 200 500 1000}} { continue }
    set factorial [big fact $n]
    puts [format "%4d  %-28s %6d %5d" $n [short $factorial] [string length $factorial] \
        [ending_zeros $factorial]]

    # Tcl's own integers agree.
    if {$factorial ne $product} { error "$n! is not $factorial" }
}
