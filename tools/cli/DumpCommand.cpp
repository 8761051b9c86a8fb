// tavrin dump: every record of a table, read from the files' bytes without opening the table, so
// that dumping writes nothing, not even a clean flag. Records come in the order of their entries.

#include <iostream>
#include <memory>
#include <vector>

#include "Commands.h"
#include "DumpStream.h"
#include "Progress.h"
#include "Report.h"
#include "TableFiles.h"
#include "tavrin/base/Exception.h"
#include "tavrin/records/FieldList.h"
#include "tavrin/records/Record.h"
#include "tavrin/storage/DiskDataStoreHeader.h"

namespace Tavrin::Tool {

using Database::ITable;
using Database::Record;

namespace {

constexpr std::size_t BatchSize = 1000;

// Where the records go: text lines, or record frames of BatchSize records.
class RecordSink {
public:
    RecordSink(ITable& table, DumpForm form) : table_(table), form_(form) {}

    StatusCode Start(const TableFiles& files) {
        if (form_ == DumpForm::Text) {
            std::cout << '#';
            const char* separator = " ";
            for (const auto& field : table_.GetFieldSpecificationList()) {
                std::cout << separator << field.GetName();
                separator = ",";
            }
            std::cout << '\n';
            return std::cout ? Status::Success : Status::Failure;
        }
        MessageBuilder builder;
        StatusCode status = SerializeTableMessage(builder, files.table, files.indexes);
        if (status == Status::Success) status = WriteStreamStart(std::cout);
        return status == Status::Success ? WriteFrame(std::cout, FrameKind::Table, builder.GetBuffer(), builder.GetLength())
                                         : status;
    }

    StatusCode Add(const unsigned char* image, std::uint32_t number) {
        if (form_ == DumpForm::Text) {
            std::cout << table_.GetFieldList()->ToLogString(image) << '\n';
            return std::cout ? Status::Success : Status::Failure;
        }
        batch_.emplace_back(&table_, image, number);
        return batch_.size() == BatchSize ? Flush() : Status::Success;
    }

    StatusCode Finish() {
        if (form_ == DumpForm::Text) return Status::Success;
        const StatusCode status = batch_.empty() ? Status::Success : Flush();
        return status == Status::Success ? WriteFrame(std::cout, FrameKind::End, nullptr, 0) : status;
    }

private:
    StatusCode Flush() {
        MessageBuilder builder;
        StatusCode status = table_.SerializeRecords(builder, batch_);
        if (status == Status::Success) {
            status = WriteFrame(std::cout, FrameKind::Records, builder.GetBuffer(), builder.GetLength());
        }
        batch_.clear();
        return status;
    }

    ITable& table_;
    DumpForm form_;
    std::vector<Record> batch_;
};

// An entry whose record a disk store never wrote back holds no record; an open would free it.
bool HoldsRecord(const StoreImage& store, const EntryFront& front) {
    return front.used && !(store.IsDisk() && front.mark == Database::DiskDataStoreHeader::NeverWritten);
}

int DumpRecords(const std::string& path, TableFiles& files, RecordSink& sink, Progress& progress) {
    StoreImage& store = files.store;
    const std::uint32_t count = store.GetHeader().maxEntries;
    std::vector<unsigned char> image(store.GetHeader().recordSize);
    std::uint32_t number = 0;
    for (std::uint32_t id = 0; id < count; ++id) {
        EntryFront front;
        StatusCode status = store.ReadFront(id, front);
        if (status == Status::Success && HoldsRecord(store, front)) {
            status = store.ReadRecord(id, image.data());
            if (status == Status::Success) status = sink.Add(image.data(), number++);
        }
        if (status != Status::Success) {
            Complain(path, "entry " + std::to_string(id) + " could not be dumped: " + DescribeStatus(status) +
                               " (tavrin check tells more)");
            return ExitError;
        }
        if (id % 65536 == 0) progress.Update(id, count);
    }
    return ExitSuccess;
}

}  // namespace

int RunDump(const std::string& path, DumpForm form, const CommonOptions& options) {
    TableFiles files;
    int result = ReadTableFiles(path, files);
    if (result != ExitSuccess) return result;
    std::unique_ptr<ITable> table;
    try {
        table = MakeFilelessTable(files.table);
    } catch (const std::exception& error) {
        Complain(path, std::string("its stored description makes no table: ") + error.what());
        return ExitError;
    }
    if (table->GetRecordLength() != files.store.GetHeader().recordSize) {
        Complain(path, "its records are not as long as its description says; tavrin check tells more");
        return ExitError;
    }
    if (!files.store.GetFileHeader().clean) Complain(path, CrashLeftText(false));
    RecordSink sink(*table, form);
    Progress progress("dumping", options.quiet);
    if (sink.Start(files) != Status::Success) return ExitError;
    result = DumpRecords(path, files, sink, progress);
    progress.Finish();
    if (result == ExitSuccess && sink.Finish() != Status::Success) {
        Complain(path, "the dump could not be written in full");
        return ExitError;
    }
    return result;
}

}  // namespace Tavrin::Tool
