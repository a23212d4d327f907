# Whole scripts, each written once: "big " stands for a word's command, which is gmp::WORD in the
# other version. The answers of both must be the same.
set SCRIPTS {
    "RSA, 1,024 bits: seal and open" {
        proc mod_power {a e m} {
            for {set result 1} {[big > $e 0]} {set e [big div2 $e]} {
                if {![big is_even $e]} { set result [big % [big * $result $a] $m] }
                set a [big % [big * $a $a] $m]
            }
            return $result
        }
        proc mod_inverse {a m} {
            lassign [list $m 0 $a 1] r x next_r next_x
            while {[big != $next_r 1]} {
                set q [big / $r $next_r]
                lassign [list $next_r $next_x [big % $r $next_r] \
                    [big - $x [big * $q $next_x]]] r x next_r next_x
            }
            expr {[big < $next_x 0] ? [big + $next_x $m] : $next_x}
        }
        proc main {} {
            set p [big - [big pow2 512] 569]
            set q [big - [big pow2 512] 629]
            set n [big * $p $q]
            set private [mod_inverse 65537 [big * [big - $p 1] [big - $q 1]]]
            set message [string repeat 1234567890 30]
            set sealed [mod_power $message 65537 $n]
            if {[mod_power $sealed $private $n] ne $message} { error "it came back changed" }
            return $sealed
        }
    }
    "5,000 digits of pi" {
        proc arctan_of_inverse {x one} {
            set power [big / $one $x]
            set square [big * $x $x]
            set sum $power
            for {set k 3; set sign -} {[big > $power 0]} {incr k 2} {
                set power [big / $power $square]
                set term [big / $power $k]
                if {$sign eq "-"} { big -= sum $term } else { big += sum $term }
                set sign [expr {$sign eq "-" ? "+" : "-"}]
            }
            return $sum
        }
        proc main {} {
            set one [big ** 10 5010]
            string range [big - [big * 16 [arctan_of_inverse 5 $one]] \
                [big * 4 [arctan_of_inverse 239 $one]]] 0 4999
        }
    }
    "1000! by *=" {
        proc main {} {
            set product 1
            for {set i 2} {$i <= 1000} {incr i} { big *= product $i }
            return $product
        }
    }
    "1,000 Fibonacci sums" {
        proc main {} {
            lassign {0 1} a b
            for {set i 0} {$i < 1000} {incr i} { lassign [list $b [big + $a $b]] a b }
            return $a
        }
    }
    "Lucas-Lehmer test of 2^2203 - 1" {
        proc main {} {
            set m [big - [big pow2 2203] 1]
            for {set i 2; set s 4} {$i < 2203} {incr i} {
                set s [big % [big - [big * $s $s] 2] $m]
            }
            return $s
        }
    }
}

proc prepare_script {name script} {
    foreach {who prefix} {big {big } gmp gmp::} {
        namespace eval "$who $name" [string map [list {big } $prefix] $script]
        set ::best($name,$who) Inf
        lappend answers [namespace eval "$who $name" main]
    }
    if {[lindex $answers 0] ne [lindex $answers 1]} { error "$name: $answers" }
}

proc measure_script {name} {
    foreach who {big gmp} {
        set spent [lindex [time { namespace eval "$who $name" main }] 0]
        set ::best($name,$who) [expr {min($::best($name,$who), double($spent))}]
    }
}
