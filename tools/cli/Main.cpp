// tavrin: look inside, check, dump and load a table from the shell. Exit status 0 on success, 1 when
// a check finds a problem, 2 for a wrong command line or a file that can't be opened or read.

#include <exception>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

#include "Commands.h"
#include "Report.h"

namespace {

using namespace Tavrin::Tool;

// A subcommand that works on one table, named by its record file.
CLI::App* AddTableCommand(CLI::App& app, const std::string& name, const std::string& description,
                          std::string& file) {
    CLI::App* command = app.add_subcommand(name, description);
    command->add_option("FILE", file, "The table's record file (NAME.tab)")->required();
    return command;
}

int Run(int argc, char** argv) {
    CLI::App app("Looks inside, checks, dumps and loads the tables of TavrinDatabase.", "tavrin");
    app.require_subcommand(1);
    app.fallthrough();  // --quiet may also stand behind the subcommand
    CommonOptions common;
    app.add_flag("-q,--quiet", common.quiet, "Show no progress bar")->configurable(false);

    std::string infoFile;
    CLI::App* info = AddTableCommand(
        app, "info", "Describe a table from its files: description, records, capacity, files and indexes. Reads only.",
        infoFile);

    std::string statFile;
    bool json = false;
    CLI::App* stat = AddTableCommand(
        app, "stat", "Figures of a table's store and indexes: entries, bytes, cache hits, tree shape, hash load.",
        statFile);
    stat->add_flag("--json", json, "Write the figures as one JSON object");

    std::string checkFile;
    CLI::App* check = AddTableCommand(
        app, "check", "Check the structure of a table's store, then its indexes against the records.", checkFile);
    bool repair = false;
    check->add_flag("--repair", repair,
                    "Repair a table that fails: rewrite the store's counts and free list from its used flags and "
                    "rebuild every index, on a copy that replaces the files only if it checks clean");

    std::string dumpFile;
    bool messages = false;
    bool textForm = false;
    CLI::App* dump = AddTableCommand(app, "dump", "Write every record to stdout. Reads only.", dumpFile);
    CLI::Option* text = dump->add_flag("--text", textForm, "One line of text per record (the default)");
    dump->add_flag("--messages", messages, "A binary stream that tavrin load reads")->excludes(text);

    std::string loadDirectory;
    bool force = false;
    CLI::App* load = app.add_subcommand("load", "Make a new table in DIR from a stream of tavrin dump --messages "
                                                "on stdin: the records first, then the indexes.");
    load->add_option("DIR", loadDirectory, "The directory of the new table")->required();
    load->add_flag("--force", force, "Replace a table of that name in DIR");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const int status = app.exit(error);
        return status == 0 ? ExitSuccess : ExitError;
    }
    if (*info) return RunInfo(infoFile);
    if (*stat) return RunStat(statFile, json);
    if (*check) return RunCheck(checkFile, common, repair);
    if (*dump) return RunDump(dumpFile, messages ? DumpForm::Messages : DumpForm::Text, common);
    return RunLoad(loadDirectory, force, common);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "tavrin: " << error.what() << '\n';
        return ExitError;
    }
}
