#pragma once
// How the tool speaks to its user: exit statuses, and messages on stderr that name the file and say
// what to do about it.

#include <string>

#include "tavrin/base/Status.h"

namespace Tavrin::Tool {

/// The exit statuses of every subcommand.
enum ExitStatus : int {
    /// The command did what was asked, and a check found nothing.
    ExitSuccess = 0,
    /// A check found a problem, which the report names.
    ExitFinding = 1,
    /// The command line was wrong, or a file could not be opened or read.
    ExitError = 2
};

/// Writes "tavrin: <file>: <text>" and a line end to stderr.
void Complain(const std::string& file, const std::string& text);

/// What a file left by a crash means, and what the next open of it does; `refused` when an open
/// by this run was the one refused (and so the one that marked the file).
std::string CrashLeftText(bool refused);

/// Explains on stderr why `file` could not be opened (`status` of the open; `wasClean` from its
/// header before the open) and what to do. Returns ExitError.
int ReportOpenFailure(const std::string& file, StatusCode status, bool wasClean);

/// "status <n> (<text>)".
std::string DescribeStatus(StatusCode status);

}  // namespace Tavrin::Tool
