# The square root of 2 and e to 300 decimal places, or as many as asked for (at most 3,000):
# scripts/run examples/digits.tcl ?PLACES?
package require omrel_bignum

# Prints a value that was scaled by 10 to the number of places; its integer part has one digit.
proc show {name scaled} {
    puts "$name = [string index $scaled 0]."
    foreach line [regexp -all -inline {.{1,60}} [string range $scaled 1 end]] {
        puts "    [regsub -all {.{10}(?=.)} $line {& }]"
    }
}

# The square root of 2 * 10^(2 * places) is that of 2 times 10^places.
proc root_of_two {places} { big sqrt 2[string repeat 0 [expr {2 * $places}]] }

# The sum of 1/k!. Each term loses less than one unit of its last place, so ten places more keep
# what is lost out of sight.
proc e {places} {
    set term 1[string repeat 0 [expr {$places + 10}]]
    for {set k 1; set sum 0} {[big > $term 0]} {incr k} {
        big += sum $term
        set term [big / $term $k]
    }
    string range $sum 0 $places
}

set places [lindex [concat $argv 300] 0]
if {![string is digit -strict $places] || $places < 1 || $places > 3000} {
    error "usage: digits.tcl ?PLACES?, 1 to 3000 places"
}
set root [root_of_two $places]
set e [e $places]
show "sqrt 2" $root
show "e" $e

# The root is neither too large nor too small, in Tcl's own integers.
set square [expr {2 * 10 ** (2 * $places)}]
if {$root ** 2 > $square || ($root + 1) ** 2 <= $square} { error "the root of 2 is wrong" }

# The same series as one fraction.
for {set k [expr {$places + 20}]; set top 1; set bottom 1} {$k > 0} {incr k -1} {
    set bottom [expr {$bottom * $k}]
    set top [expr {$top + $bottom}]
}
if {$top * 10 ** $places / $bottom != $e} { error "e is wrong" }
