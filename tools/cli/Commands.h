#pragma once
// The subcommands of the tavrin program; each returns the program's exit status (Report.h).

#include <string>

namespace Tavrin::Tool {

/// Options that every subcommand shares.
struct CommonOptions {
    /// No progress bar, even on a terminal.
    bool quiet = false;
};

/// tavrin info FILE: the description, store figures, files and indexes of a table, read only.
int RunInfo(const std::string& path);

/// tavrin check FILE: the store's structure, then the table's own integrity check; with `repair`,
/// a table that fails it is repaired (RunRepair).
int RunCheck(const std::string& path, const CommonOptions& options, bool repair);

/// tavrin check --repair FILE: the store's counts and free list rewritten from its used flags and
/// every index rebuilt, on a copy that replaces the table's files only if it checks clean.
int RunRepair(const std::string& path, bool quiet);

/// tavrin stat FILE: the figures of the store and of each index, aligned or as JSON.
int RunStat(const std::string& path, bool json);

/// The forms of tavrin dump.
enum class DumpForm { Text, Messages };

/// tavrin dump FILE: every record, as text lines or as a stream of messages on stdout.
int RunDump(const std::string& path, DumpForm form, const CommonOptions& options);

/// tavrin load DIR: a new table in `directory` from a message stream on stdin.
int RunLoad(const std::string& directory, bool force, const CommonOptions& options);

}  // namespace Tavrin::Tool
