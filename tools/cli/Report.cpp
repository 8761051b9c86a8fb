#include "Report.h"

#include <iostream>

namespace Tavrin::Tool {

void Complain(const std::string& file, const std::string& text) {
    std::cerr << "tavrin: " << file << ": " << text << '\n';
}

std::string DescribeStatus(StatusCode status) {
    return "status " + std::to_string(status) + " (" + StatusCodeToString(status) + ")";
}

std::string CrashLeftText(bool refused) {
    const std::string what =
        "was not closed in order: the process that had it open ended without closing it, so the "
        "records written last may be missing (a disk table loses what was still in its cache). ";
    if (refused) {
        return what +
               "This open was refused once and has marked the file: the next open will open it, and "
               "rebuild from the records every index whose files were not closed in order either.";
    }
    return what +
           "The next open will refuse it once (status 23) and mark it; the open after that will open "
           "it and rebuild from the records every index whose files were not closed in order either.";
}

int ReportOpenFailure(const std::string& file, StatusCode status, bool wasClean) {
    switch (status) {
        case Status::AlreadyOpen:
            Complain(file, "in use by another process (status 17); close the table that holds it "
                           "and try again");
            break;
        case Status::NotFound:
            Complain(file, "no such file or directory");
            break;
        case Status::DescriptionDiffers:
            Complain(file, "the table stored in it is named for another file (it was renamed or copied); "
                           "give it back the name of its table");
            break;
        case Status::Invalid:
            if (!wasClean) {
                Complain(file, CrashLeftText(true));
                break;
            }
            [[fallthrough]];
        default:
            Complain(file, "cannot be opened: " + DescribeStatus(status) +
                               "; it may be no table file, or damaged (tavrin check tells more)");
            break;
    }
    return ExitError;
}

}  // namespace Tavrin::Tool
