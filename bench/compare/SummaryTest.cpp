// Checks of the summary: which lines count, medians and spreads, the fastest peer, ratios and the
// machine-readable lines.

#include <gtest/gtest.h>

#include <sstream>

#include "Summary.h"

namespace Tavrin::Compare {
namespace {

TEST(Summary, ParsesResultLinesAndSkipsEverythingElse) {
    const auto sample = ParseSample("store=lmdb n=1000000 phase=memory rss_bytes_per_record=120.5 file_bytes_per_record=96");
    ASSERT_TRUE(sample);
    EXPECT_EQ(sample->store, "lmdb");
    EXPECT_EQ(sample->n, 1000000u);
    EXPECT_EQ(sample->phase, "memory");
    ASSERT_EQ(sample->metrics.size(), 2u);
    EXPECT_EQ(sample->metrics[0], std::make_pair(std::string("rss_bytes_per_record"), 120.5));

    for (const char* line : {"", "== N = 1000000, run 2", "n=5 phase=get ns_per_op=3", "store=a phase=get ns_per_op=3",
                             "store=a n=5 ns_per_op=3", "store=a n=5 phase=get", "store=a n=5 phase=get ns_per_op=fast",
                             "store=a n=0 phase=get ns_per_op=3", "store=a n=5 phase=get =3",
                             "store=a n=5 phase=get ns_per_op=3 trailing"}) {
        EXPECT_FALSE(ParseSample(line)) << line;
    }
}

TEST(Summary, MedianOfOddAndEvenCounts) {
    const Spread odd = SpreadOf({30, 10, 20});
    EXPECT_EQ(odd.median, 20);
    EXPECT_EQ(odd.min, 10);
    EXPECT_EQ(odd.max, 30);
    EXPECT_EQ(odd.runs, 3u);
    EXPECT_EQ(SpreadOf({4, 1, 3, 2}).median, 2.5);
    EXPECT_EQ(SpreadOf({7}).median, 7);
}

Summary ThreeRuns() {
    std::istringstream log(
        "run 1\n"
        "store=tavrin n=100 phase=get ns_per_op=100\n"
        "store=tavrin n=100 phase=get ns_per_op=120\n"
        "store=tavrin n=100 phase=get ns_per_op=110\n"
        "store=tavrin-dir n=100 phase=get ns_per_op=121\n"
        "store=std-map n=100 phase=get ns_per_op=50\n"
        "store=lmdb n=100 phase=get ns_per_op=220\n"
        "store=kc-hash n=100 phase=get ns_per_op=200\n"
        "store=tavrin n=100 phase=memory store_rss_bytes_per_record=130 model_bytes_per_record=100\n");
    Summary summary;
    summary.AddLines(log);
    return summary;
}

TEST(Summary, FastestPeerLeavesOutOurStoresAndTheReferences) {
    const Summary summary = ThreeRuns();
    const auto fastest = summary.FastestPeer(100, "get");
    ASSERT_TRUE(fastest);
    EXPECT_EQ(fastest->first, "kc-hash");
    EXPECT_EQ(fastest->second, 200);
    EXPECT_FALSE(summary.FastestPeer(100, "scan"));
    EXPECT_FALSE(summary.FastestPeer(200, "get"));
}

TEST(Summary, PrintsMediansRatiosAndLines) {
    const Summary summary = ThreeRuns();
    std::ostringstream tables, ratios, lines;
    summary.PrintTables(tables);
    summary.PrintRatios(ratios, "tavrin");
    summary.PrintLines(lines);

    EXPECT_NE(tables.str().find("| tavrin | - | 110 (100-120) | - |"), std::string::npos) << tables.str();
    EXPECT_NE(ratios.str().find("| tavrin / fastest peer | - | 0.55 (kc-hash) |"), std::string::npos) << ratios.str();
    EXPECT_NE(ratios.str().find("| tavrin / std-map | - | 2.20 |"), std::string::npos);
    EXPECT_NE(ratios.str().find("| tavrin / lmdb | - | 0.50 |"), std::string::npos);
    EXPECT_NE(ratios.str().find("| tavrin-dir / tavrin | - | 1.10 |"), std::string::npos);
    EXPECT_NE(ratios.str().find("tavrin: store RSS 130 B per record = 1.30 x"), std::string::npos);
    EXPECT_NE(lines.str().find("store=tavrin n=100 phase=get ns_per_op=110.0 ns_per_op_min=100.0 "
                               "ns_per_op_max=120.0 runs=3\n"),
              std::string::npos)
        << lines.str();
}

}  // namespace
}  // namespace Tavrin::Compare
