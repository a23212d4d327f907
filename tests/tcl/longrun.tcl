# Rounds of a thousand calls on variables of all kinds; after each an interpreter of its own, whose
# commands are renamed and deleted, comes and goes.
package require omrel_bignum

proc must {got wanted} {
    if {$got ne $wanted} { error "got $got, wanted $wanted" }
}

proc round {n} {
    upvar 1 total total array array
    set local $n
    for {set i 0} {$i < 166} {incr i} {
        must [big += total 3] [expr {3 * ($n * 166 + $i + 1)}]
        must [big -- array($i)] [expr {$i - $n - 1}]
        must [big *= local 7] [expr {$n * 7 ** ($i + 1)}]
        must [big fdiv $local [expr {7 ** $i}]] [expr {$n * 7}].[string repeat 0 18]
        must [big bintoint [big inttobin $local]] $local
    }
}

trace add variable total write {apply {args { incr ::writes }}}
for {set i 0} {$i < 166} {incr i} { set array($i) $i }
for {set n 0} {$n < [lindex $argv 0]} {incr n} {
    round $n
    set child [interp create]
    must [$child eval {
        package require omrel_bignum
        rename big other
        trace add variable x write {apply {args { catch { rename other {} } }}}
        list [other += x 1] $x [info commands other]
    }] {1 1 {}}
    interp delete $child
}
must $writes [expr {1 + [lindex $argv 0] * 166}]  ;# the first call creates the variable
