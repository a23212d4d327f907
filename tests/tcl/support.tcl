# What the Tcl tests share. Each test file sources this first and ends with `finish`.
package require tcltest
namespace import ::tcltest::test
package require omrel_bignum

# Runs a script in a tclsh of its own, its output a pipe. Returns exit status and output bytes.
proc in_child {script} {
    set pipe [open |[list [info nameofexecutable] /dev/stdin << $script 2>@1] rb]
    set output [read $pipe]
    set status [catch {close $pipe} message options]
    if {$status && [lindex [dict get $options -errorcode] 0] eq "CHILDSTATUS"} {
        set status [lindex [dict get $options -errorcode] 2]
    }
    return [list $status $output]
}

# A file's text; its name is relative to the top of the source tree.
proc contents {name} {
    set file [open [file join [file dirname [info script]] .. .. $name]]
    fconfigure $file -encoding utf-8
    return [read $file][close $file]
}

# The line numbers in reports are the plug-in's own source lines.
proc without_lines {text} { regsub -all {line \d+} $text {line N} }

# Checks rows of {command answer}; the error names every row that differs.
proc check_rows {rows} {
    set wrong {}
    foreach {command wanted} $rows {
        if {[catch {uplevel 1 $command} got]} { set got "error: $got" }
        if {$got ne $wanted} { append wrong "\n$command: got $got, wanted $wanted" }
    }
    if {$wrong ne ""} { error $wrong }
}

proc finish {} {
    set failed $::tcltest::numTests(Failed)
    ::tcltest::cleanupTests
    exit [expr {$failed > 0}]
}
