# Draws the table of calls from scripts with gnuplot: tclsh chart.tcl TABLE.json CHART.svg
#
# A panel a word: digits of the (longer) operand on the x axis, time of a call on the y axis, both
# logarithmic; a line for each contestant that the table has times of. `big`, GMP and expr are called
# in one tclsh, Python and bc are languages of their own; all go from texts to a text.
set PANELS {
    +    "a + b, equally long"        {$b == $a}
    *    "a * b, equally long"        {$b == $a}
    /    "a / b, b half as long"      {$b == ($a + 1) / 2}
    sqrt "square root of a"           {$b eq ""}
}
set CONTESTANTS {big "big in Tcl" gmp "GMP in Tcl" expr "expr in Tcl" python "Python" bc "bc"}
set COLOURS {big #d1242f gmp #0969da expr #8250df python #bf8700 bc #6e7781}

# The table has a row a line. Rows are lists {word digits times}, times by contestant in ns.
proc read_rows {path} {
    set file [open $path]
    foreach line [split [read $file][close $file] \n] {
        if {![regexp {"word": "([^"]*)", "digits": "([^"]*)"} $line - word digits]} continue
        set times {}
        foreach {- name time} [regexp -all -inline {"(\w+)_ns": ([\d.e+]+)} $line] {
            dict set times $name $time
        }
        lappend rows [list $word $digits $times]
    }
    return $rows
}

# Points of a panel's lines: {contestant {digits time ...} ...}, times in seconds.
proc points_of {rows wanted condition} {
    set points {}
    foreach row $rows {
        lassign $row word digits times
        if {$word ne $wanted || ![regexp {^(\d+)(?: x (\d+))?$} $digits - a b]} continue
        if {![expr $condition]} continue
        dict for {name time} $times { dict lappend points $name $a [expr {$time * 1e-9}] }
    }
    return $points
}

# The gnuplot commands of a panel.
proc panel {title points} {
    foreach {name label} $::CONTESTANTS {
        if {![dict exists $points $name]} continue
        set style "lc rgb '[dict get $::COLOURS $name]' lw [expr {$name eq "big" ? 3 : 1.5}]"
        lappend lines "'-' using 1:2 with linespoints pt 7 ps 0.35 $style title '$label'"
        append data [join [lmap {x y} [dict get $points $name] { string cat "$x $y" }] \n] \ne\n
    }
    return "set title '$title'\nplot [join $lines {, }]\n$data"
}

lassign $argv table chart
set rows [read_rows $table]
foreach {word title condition} $PANELS {
    set points [points_of $rows $word $condition]
    if {$points ne ""} { lappend panels [panel $title $points] }
}
if {![info exists panels]} { error "the table has no rows of [join [dict keys $PANELS]]" }

set gnuplot {
    set terminal svg size 900,640 font 'sans-serif,13' background rgb 'white'
    set logscale xy
    set xrange [1:7000]
    set yrange [5e-8:2]
    set format x '%.0f'
    set format y '%.0s %cs'
    set grid xtics ytics lc rgb '#d8dee4'
    set key top left Left reverse samplen 2
    set xlabel 'digits'
    set ylabel 'time of a call'
}
append gnuplot "set output '$chart'\n" \
    "set multiplot layout [expr {([llength $panels] + 1) / 2}],[expr {min([llength $panels], 2)}]\n"
exec gnuplot << [append gnuplot [join $panels \n] "\nunset multiplot\n"] >@stdout 2>@stderr
