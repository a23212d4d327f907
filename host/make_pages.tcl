# Writes what doc/reference.md tells of `big` in its other forms, so that it is told once:
#
#   tclsh make_pages.tcl SOURCE-DIRECTORY VERSION DATE
#
#   big.n           the man page: doc/big.n.in with the sections in it
#   omrel_help.tcl  the proc omrel::help: host/omrel_help.tcl.in with the tables in it
#
# It understands what that file uses: headings, paragraphs, indented code, lists of one level, and
# tables with the columns words, arguments, answer, examples and errors.

proc contents {path} {
    set file [open $path]
    fconfigure $file -encoding utf-8
    return [read $file][close $file]
}

proc write {path text} {
    set file [open $path w]
    fconfigure $file -encoding utf-8 -translation lf
    puts $file [string trimright $text \n]
    close $file
}

# --- reading ------------------------------------------------------------------------------------

# The blocks of a section, which blank lines separate.
proc blocks {reference title} {
    set heading "\n## $title\n"
    set start [string first $heading $reference]
    if {$start < 0} { error "doc/reference.md has no section \"$title\"" }
    incr start [string length $heading]
    set end [string first "\n## " "$reference\n## " $start]
    set text [string trim [string range $reference $start $end-1] \n]
    split [regsub -all {\n\n+} $text \1] \1
}

# The rows of a table as lists {words arguments answer examples errors}, an example being a command
# and what comes of it. A bar within a cell is escaped; the two lines of the heading have no words.
proc rows {table} {
    lmap line [split [string map {\\| \1} $table] \n] {
        set cells [lmap cell [split $line |] { string map {\1 |} [string trim $cell] }]
        lassign [lrange $cells 1 5] words arguments answer examples errors
        set words [lmap {- word} [regexp -all -inline {`([^`]*)`} $words] { set word }]
        if {$words eq ""} continue
        set examples [lmap example [regexp -all -inline {`[^`]*` (?:->|prints) `[^`]*`} $examples] {
            string map {` {}} $example
        }]
        list $words $arguments $answer $examples $errors
    }
}

proc sentence {text} { return [string toupper $text 0 0]. }

# --- the man page -------------------------------------------------------------------------------

# A text as roff must have it: each character as itself. The block is the page's own string.
proc literal {text} {
    string map {\\ \\e - \\- ' \\(aq ` \\(ga ^ \\(ha ~ \\(ti \u25a0 \\*[BLK]} $text
}

# No line is taken for a request.
proc literal_start {lines} { regsub -all -line {^\.} $lines {\\\&.} }

proc example_lines {text} { string cat ".nf\n" [literal_start [literal $text]] "\n.fi\n" }

# Marked text in short lines: what is between backquotes or pairs of asterisks becomes bold.
proc prose {text} {
    foreach {plain code} [split [regsub -all {\s+} $text { }] `] {
        set plain [string map {\\- -} [literal $plain]]
        append result [regsub -all {\*\*([^*]+)\*\*} $plain {\\fB\1\\fR}]
        if {$code ne ""} { append result "\\fB[literal $code]\\fR" }
    }
    literal_start [regsub -all {(.{1,76})(?: |$)} $result "\\1\n"]
}

# In capitals, but for what is typed.
proc heading {title} {
    foreach {plain code} [split $title `] { append result [string toupper $plain] $code }
    literal $result
}

# Arguments are slanted; an option is typed as it is.
proc usage {word arguments} {
    set arguments [regsub -all {[a-z]+} [literal $arguments] {\\fI&\\fR}]
    set arguments [regsub -all {\\-\\fI([a-z]+)} $arguments {\\fB\\-\1}]
    return "\\fBbig [literal $word]\\fR $arguments"
}

proc entry {words arguments answer examples errors} {
    set tags [lmap word $words { usage $word $arguments }]
    append text ".TP\n[join $tags "\n.TQ\n"]\n[prose [sentence $answer]]"
    append text ".IP\n[example_lines [join $examples \n]]"
    if {$errors ne ""} { append text ".IP\n[prose "Errors: $errors."]" }
    return $text
}

proc block {text} {
    switch -glob -- $text {
        "### *" { return ".SS \"[literal [string range $text 4 end]]\"\n" }
        "| *" { return [join [lmap row [rows $text] { entry {*}$row }] ""] }
        "    *" { return ".PP\n[example_lines $text]" }
        "- *" {
            set items [split [string map [list "\n- " \1] [string range $text 2 end]] \1]
            return [join [lmap item $items { string cat ".IP \\(bu 2\n" [prose $item] }] ""]
        }
        default { return ".PP\n[prose $text]" }
    }
}

# A heading begins its first paragraph itself.
proc page {reference template} {
    set lines [lmap line [split $template \n] {
        if {[regexp {^@section (.*)@$} $line - title]} {
            set line ".SH \"[heading $title]\"\n"
            foreach block [blocks $reference $title] { append line [block $block] }
        }
        string trimright $line \n
    }]
    regsub -all {(\n\.S[HS] [^\n]*)\n\.PP} [join $lines \n] {\1}
}

# --- help and completion ------------------------------------------------------------------------

# Plain text in lines of at most 80 columns.
proc indented {text} {
    set text [regsub -all {\*\*(\S[^*]*\S)\*\*} [string map {` {}} $text] {\1}]
    set text [regsub -all {\s+} $text { }]
    string trimright [regsub -all {(.{1,76})(?: |$)} $text "    \\1\n"] \n
}

# What is told of a whole command: its usage, and a section's first paragraph.
proc command {usage reference title} {
    string cat $usage \n [indented [lindex [blocks $reference $title] 0]]
}

proc explanation {words arguments answer examples errors} {
    set lines [lmap word $words { string cat "big $word $arguments" }]
    lappend lines [indented [sentence $answer]]
    foreach example $examples { lappend lines "        $example" }
    if {$errors ne ""} { lappend lines [indented "Errors: $errors."] }
    join $lines \n
}

# The groups of words, a title and its words in turn; and a dictionary of explanations.
proc tables {reference} {
    foreach block [blocks $reference {The words of `big`}] {
        regexp {^### (.*)} $block - title
        foreach row [expr {[string match "| *" $block] ? [rows $block] : {}}] {
            foreach word [lindex $row 0] {
                dict set groups $title $word {}
                dict lappend entries $word [explanation {*}$row]
            }
        }
    }
    dict set entries big [list [command "big word argument ..." $reference {The words of `big`}]]
    dict set entries bigtest [list [command bigtest $reference `bigtest`]]
    list [dict map {title words} $groups { indented [dict keys $words] }] \
        [dict map {word texts} $entries { join $texts \n }]
}

lassign $argv source version date
set reference [contents $source/doc/reference.md]
set page [page $reference [contents $source/doc/big.n.in]]
write big.n [string map [list @VERSION@ $version @DATE@ $date] $page]
lassign [tables $reference] groups entries
set help [contents $source/host/omrel_help.tcl.in]
write omrel_help.tcl [string map [list @GROUPS@ $groups @ENTRIES@ $entries] $help]
