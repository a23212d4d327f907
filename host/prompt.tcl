# The prompt of scripts/run, for a terminal:
#
#   tclsh prompt.tcl
#
# Lines are edited, kept and completed where the package tclreadline is installed. Without it they
# are read as the terminal hands them over, which is 4,095 characters at most.
#
# Ctrl-C ends the line that is being typed, and the unfinished command that it belongs to. For that
# it is a character while a line is read, the last one of its line. While a command runs it is a
# signal; the package Tclx, where it is installed, makes an error of it. It sits in an interpreter
# of its own, for its many commands.
package require omrel_bignum

namespace eval prompt { variable terminal [exec stty -g <@stdin] }

# --- reading ------------------------------------------------------------------------------------

# One line of the terminal, a Ctrl-C at its end if it was left by that.
proc prompt::plain_line {prompt} {
    set MAX_LINE 4095
    puts -nonewline $prompt
    flush stdout
    set line {}
    while {[set character [read stdin 1]] ni {{} \n \3}} { append line $character }
    if {$character eq "" && $line eq ""} { puts {}; exit }
    if {$character eq "\3"} { puts {} }
    if {[string length [encoding convertto utf-8 $line]] >= $MAX_LINE} {
        puts stderr "Not run: a terminal cuts lines off at $MAX_LINE characters, as it may have\
            done here.\nWith Debian's tcl-tclreadline all of a line is read; so is a file, by\
            \"source\"."
        return \3
    }
    append line [string map {\n {}} $character]
}

# What readline is told: the user's own settings, and to hand over Ctrl-C alone for the line.
proc prompt::edit_lines {} {
    package require tclreadline
    set channel [file tempfile name]
    foreach settings [list /etc/inputrc ~/.inputrc] { puts $channel "\$include $settings" }
    if {[info exists ::env(INPUTRC)]} { puts $channel "\$include $::env(INPUTRC)" }
    puts $channel {"\C-c": "\C-e\C-u\C-v\C-c\C-m"}
    close $channel
    set ::env(INPUTRC) $name
    ::tclreadline::Setup [file join $::env(HOME) .big_history]
    ::tclreadline::readline customcompleter ::prompt::complete
    proc ::prompt::line {prompt} {
        # The file has been read with the first line.
        set line [::tclreadline::readline read $prompt]
        file delete $::env(INPUTRC)
        return $line
    }
}

# The words of big, after it and after help; else what tclreadline knows.
proc prompt::complete {text start end line} {
    if {![regexp {(^|[\s\[;\x7b"])(big|help|omrel::help)\s+\S*$} [string range $line 0 $end-1]]} {
        return [::tclreadline::ScriptCompleter $text $start $end $line]
    }
    set words [lsearch -all -inline [dict keys $::omrel::entries] $text*]
    concat [list [tcl::prefix longest $words {}]] $words
}

# A whole command, of several lines if need be; nothing when it was given up.
proc prompt::command {} {
    set command [line "% "]
    while {[string index $command end] ne "\3" && ![info complete $command\n]} {
        append command \n [line "> "]
    }
    expr {[string index $command end] eq "\3" ? {} : $command}
}

# --- running ------------------------------------------------------------------------------------

proc prompt::run {command} {
    history add $command
    switch [catch { uplevel #0 $command } answer] {
        0 - 2 { if {$answer ne ""} { puts [set ::_ $answer] } }
        1 { puts stderr [expr {[lindex $::errorCode 2] eq "SIGINT" ? "Stopped." : $answer}] }
        3 { puts stderr {invoked "break" outside of a loop} }
        4 { puts stderr {invoked "continue" outside of a loop} }
    }
}

# As omrel::help, but no answer to go on with.
proc help {{word {}}} { puts [omrel::help $word] }

set ::_ {}
set tcl_interactive 1
interp create prompt::signals
catch { prompt::signals eval { package require Tclx; signal error SIGINT } }
set prompt::reading {}
if {[catch prompt::edit_lines]} {
    interp alias {} prompt::line {} prompt::plain_line
    set prompt::reading {eol ^C}
}
puts "omrel_bignum [package require omrel_bignum]. Try  big * 123456789 987654321  or  big fact 100"
puts "help lists the words, help WORD explains one; \$_ is the last answer; exit ends."
while {true} {
    exec stty intr undef {*}$prompt::reading <@stdin
    set prompt::next [prompt::command]
    exec stty $prompt::terminal <@stdin
    prompt::run $prompt::next
}
