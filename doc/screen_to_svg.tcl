# Turns what a terminal shows into a picture: tclsh screen_to_svg.tcl <SCREEN >PICTURE.svg
#
# The screen is text with colour sequences, as "tmux capture-pane -e -p" writes it. A block is drawn
# as a rectangle, so that it looks the same in every font; all of one colour are one path.
set CELL_WIDTH 8.4
set CELL_HEIGHT 17
set MARGIN 12
set COLOURS {
    30 none    31 #c4453b 32 #3fa34d 33 #b58900 34 #3b6fc4 35 #a24bb5 36 #2aa198 37 #c8ccd4
    90 #7d8590 91 #ff6b60 92 #5fe07a 93 #ffe066 94 #6ea8ff 95 #ff7ad9 96 #5ee6e0 97 #ffffff
}
set PLAIN 37

# The colour after a sequence of numbers; backgrounds are as black as the picture's own.
proc colour_after {colour numbers} {
    foreach number [split $numbers ";"] {
        if {$number in {"" 0 39}} { set colour $::PLAIN }
        if {[dict exists $::COLOURS $number]} { set colour $number }
    }
    return $colour
}

proc escape {text} { string map {& &amp; < &lt; > &gt;} $text }

# A run of one colour that begins in a column: its text with gaps for blocks, and the blocks.
proc draw_run {text row column colour} {
    set left [expr {$::MARGIN + $column * $::CELL_WIDTH}]
    set top [expr {$::MARGIN + $row * $::CELL_HEIGHT}]
    foreach at [regexp -all -inline -indices \u25a0 $text] {
        set x [expr {$left + [lindex $at 0] * $::CELL_WIDTH + 0.5}]
        dict append ::blocks $colour [format "M%.1f %dh7.4v10h-7.4z" $x [expr {$top + 3}]]
    }
    set letters [string map {\u25a0 " "} $text]
    if {[string trim $letters] ne ""} {
        append ::texts [format {<text x="%.1f" y="%d" textLength="%.1f" fill="%s">%s</text>} $left \
            [expr {$top + 13}] [expr {[string length $text] * $::CELL_WIDTH}] \
            [dict get $::COLOURS $colour] [escape $letters]] \n
    }
}

# A colour holds on into the next line.
proc draw_line {line row} {
    set column 0
    set runs "\33\[${::colour}m$line"
    foreach {- numbers text} [regexp -all -inline {\33\[([0-9;]*)m([^\33]*)} $runs] {
        set ::colour [colour_after $::colour $numbers]
        draw_run $text $row $column $::colour
        incr column [string length $text]
    }
    set ::columns [expr {max($::columns, $column)}]
}

fconfigure stdin -encoding utf-8
fconfigure stdout -encoding utf-8
lassign [list $PLAIN 0 {} {}] colour columns texts blocks
set lines [split [string trimright [read stdin]] \n]
for {set row 0} {$row < [llength $lines]} {incr row} { draw_line [lindex $lines $row] $row }

set width [expr {int($columns * $CELL_WIDTH) + 2 * $MARGIN}]
set height [expr {$row * $CELL_HEIGHT + 2 * $MARGIN}]
puts "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"$width\" height=\"$height\"\
    font-family=\"DejaVu Sans Mono, Menlo, Consolas, monospace\" font-size=\"14\"\
    xml:space=\"preserve\">"
puts "<rect width=\"100%\" height=\"100%\" rx=\"6\" fill=\"#0d1117\"/>"
dict for {colour path} $blocks { puts "<path fill=\"[dict get $COLOURS $colour]\" d=\"$path\"/>" }
puts "$texts</svg>"
