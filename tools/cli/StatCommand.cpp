// tavrin stat: the figures of a table's store and of each of its indexes, as an aligned table or
// as JSON. The table is opened as a program opens it, since the figures come from its structures.

#include <cstdio>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>
#include <vector>

#include "Commands.h"
#include "Report.h"
#include "StoreImage.h"
#include "tavrin/base/Exception.h"
#include "tavrin/indexes/HashIndex.h"
#include "tavrin/indexes/IndexStatistics.h"
#include "tavrin/indexes/RedBlackTreeIndex.h"
#include "tavrin/tables/OpenTable.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Tool {

using namespace Tavrin::Database;

namespace {

// One figure: its label for people, its key in JSON, its value, and whether JSON quotes it.
struct Figure {
    std::string label;
    std::string key;
    std::string value;
    bool text = false;
};

// The figures of the store or of one index.
struct Section {
    std::string title;
    std::vector<Figure> figures;
};

template <class Number>
Figure Count(const std::string& label, const std::string& key, Number value) {
    return {label, key, std::to_string(value), false};
}

Figure Fraction(const std::string& label, const std::string& key, double value) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(3) << value;
    return {label, key, text.str(), false};
}

Section StoreSection(const StoreStatistics& store) {
    Section section{"Store", {{"kind", "kind", store.disk ? "disk" : "memory", true}}};
    section.figures.push_back(Count("used entries", "usedEntries", store.usedEntries));
    section.figures.push_back(Count("free entries", "freeEntries", store.freeEntries));
    section.figures.push_back(Count("file bytes", "fileBytes", store.fileBytes));
    if (store.disk) {
        section.figures.push_back(Count("cache lookups", "cacheLookups", store.cacheLookups));
        section.figures.push_back(Count("cache hits", "cacheHits", store.cacheHits));
        section.figures.push_back(Fraction("cache hit rate", "cacheHitRate", store.GetHitRate()));
    }
    return section;
}

Section IndexSection(IIndex& index) {
    const IndexSpecification& specification = index.GetSpecification();
    Section section{"Index " + std::to_string(specification.GetNumber()) + " " + specification.GetName(),
                    {Count("number", "number", specification.GetNumber()),
                     {"name", "name", specification.GetName(), true}}};
    if (const auto* tree = dynamic_cast<const RedBlackTreeIndex*>(&index)) {
        const TreeStatistics figures = GetStatistics(*tree);
        section.figures.push_back({"kind", "kind", "tree", true});
        section.figures.push_back(Count("nodes", "nodeCount", figures.nodeCount));
        section.figures.push_back(Count("height", "height", figures.height));
        section.figures.push_back(Fraction("average depth", "averageDepth", figures.averageDepth));
    } else if (const auto* hash = dynamic_cast<const HashIndex*>(&index)) {
        const HashStatistics figures = GetStatistics(*hash);
        section.figures.push_back({"kind", "kind", "hash", true});
        section.figures.push_back(Count("entries", "entries", figures.entries));
        section.figures.push_back(Count("buckets in use", "bucketsInUse", figures.bucketsInUse));
        section.figures.push_back(Count("bucket count", "bucketCount", figures.bucketCount));
        section.figures.push_back(Count("split index", "splitIndex", figures.splitIndex));
        section.figures.push_back(Count("capacity", "capacity", figures.capacity));
        section.figures.push_back(Count("longest chain", "longestChain", figures.longestChain));
        std::string lengths;
        for (std::size_t length = 0; length < figures.chainLengths.size(); ++length) {
            lengths += (length == 0 ? "" : ",") + std::to_string(figures.chainLengths[length]);
        }
        section.figures.push_back({"buckets by chain length", "chainLengths", "[" + lengths + "]", false});
    }
    return section;
}

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
            quoted += escape;
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

void PrintJson(const std::string& path, const std::vector<Section>& sections) {
    std::cout << "{\"file\": " << Quoted(path);
    for (std::size_t i = 0; i < sections.size(); ++i) {
        if (i == 0) std::cout << ", \"store\": {";
        if (i == 1) std::cout << ", \"indexes\": [";
        std::cout << (i > 1 ? ", {" : i == 1 ? "{" : "");
        const char* separator = "";
        for (const Figure& figure : sections[i].figures) {
            std::cout << separator << Quoted(figure.key) << ": " << (figure.text ? Quoted(figure.value) : figure.value);
            separator = ", ";
        }
        std::cout << "}";
    }
    std::cout << (sections.size() > 1 ? "]}\n" : ", \"indexes\": []}\n");
}

void PrintTable(const std::string& path, const std::vector<Section>& sections) {
    std::cout << path << '\n';
    for (const Section& section : sections) {
        std::cout << section.title << '\n';
        for (const Figure& figure : section.figures) {
            std::cout << "  " << std::left << std::setw(26) << figure.label << std::right << figure.value << '\n';
        }
    }
}

}  // namespace

int RunStat(const std::string& path, bool json) {
    std::unique_ptr<ITable> table;
    try {
        table.reset(OpenTable(path, true, true));
    } catch (const StatusCodeException& error) {
        FileHeaderInfo header;
        const bool wasClean = ReadFileHeader(path, header) != Status::Success || header.clean;
        return ReportOpenFailure(path, static_cast<StatusCode>(error.GetCode()), wasClean);
    } catch (const std::exception& error) {
        Complain(path, std::string("cannot be opened: ") + error.what());
        return ExitError;
    }
    std::vector<Section> sections;
    auto* concrete = dynamic_cast<Table*>(table.get());
    sections.push_back(StoreSection(concrete != nullptr ? concrete->GetStoreStatistics() : StoreStatistics()));
    for (std::uint16_t number = 0; number < table->GetNumberOfIndexes(); ++number) {
        IIndex* index = nullptr;
        if (table->GetIndex(number, index) == Status::Success && index != nullptr) {
            sections.push_back(IndexSection(*index));
        }
    }
    if (json) {
        PrintJson(path, sections);
    } else {
        PrintTable(path, sections);
    }
    return ExitSuccess;
}

}  // namespace Tavrin::Tool
