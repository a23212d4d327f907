# What the Tcl tests share. Each test file sources this first and ends with `finish`.
package require tcltest
namespace import ::tcltest::test
package require omrel_bignum

# Runs a script in a tclsh of its own, its output a pipe. Returns 0 when it ended with the exit status
# 0, else 1, and the output's bytes.
proc in_child {script} {
    set pipe [open |[list [info nameofexecutable] /dev/stdin << $script 2>@1] rb]
    return [lreverse [list [read $pipe] [catch {close $pipe}]]]
}

# A file's text; its name is relative to the top of the source tree.
proc contents {name} {
    set file [open [file join [file dirname [info script]] .. .. $name]]
    fconfigure $file -encoding utf-8
    return [read $file][close $file]
}

# The line numbers in reports are the plug-in's own source lines; addresses differ, too.
proc without_lines {text} { regsub -all {(line |0x)[0-9a-f]+} $text {\1N} }

proc finish {} {
    set failed $::tcltest::numTests(Failed)
    ::tcltest::cleanupTests
    exit [expr {$failed > 0}]
}
