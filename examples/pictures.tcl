# What `big` draws on a terminal: scripts/run examples/pictures.tcl ?pi? ?zeros? ?trace?
package require omrel_bignum

# Shows a command as if it had been typed, with what it prints and answers.
proc typed {script} {
    puts "% $script"
    set answer [uplevel #0 $script]
    if {$answer ne ""} { puts $answer }
}

# The inverse tangent of 1/x, scaled: 1/x - 1/(3 x^3) + 1/(5 x^5) - ...
proc arctan {x scale} {
    set power [big / $scale $x]
    for {set k 1; set sum 0} {[big != $power 0]} {incr k 2} {
        big [expr {$k % 4 == 1 ? "+=" : "-="}] sum [big / $power $k]
        set power [big / $power [expr {$x * $x}]]
    }
    return $sum
}

# Machin's formula: pi/4 = 4 arctan 1/5 - arctan 1/239. Ten places more keep what is cut off away.
proc pi {digits} {
    set scale 1[string repeat 0 [expr {$digits + 9}]]
    string range [big * 4 [big - [big * 4 [arctan 5 $scale]] [arctan 239 $scale]]] 0 $digits-1
}

# Each digit has its colour; 0 is a gap.
proc picture_pi {} {
    typed {big graph 1234567890}
    set ::pi [pi 1024]
    typed {big graph $pi 64}
    if {![string match 3141592653589793238462643383279502884197* $::pi]} { error "not pi" }
}

# Each 5 and each 10 among the factors adds a zero, 25 and 50 add two.
proc picture_zeros {} {
    typed {foreach n {5 10 15 20 25 30 35 40 45 50} {
    puts -nonewline "[format %2d $n]! "
    big graph [big fact $n]|
}}
}

# The search for a quotient: up by doubling, then halving the steps.
proc picture_trace {} {
    typed {big debug on}
    typed {big / 100 7}
    typed {big / 1000000 997}
    typed {big / 1[string repeat 0 30] 123456789}
    typed {big debug off}
}

foreach name [expr {$argc > 0 ? $argv : {pi zeros trace}}] { picture_$name }
