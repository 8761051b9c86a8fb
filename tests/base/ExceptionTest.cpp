#include "tavrin/base/DatabaseException.h"

#include <gtest/gtest.h>

#include <string>

#include "tavrin/base/Status.h"

namespace Tavrin::Database {
namespace {

TEST(DatabaseException, TextsAndMessages) {
    EXPECT_EQ(DatabaseException("f", "g", 1, 0).ToString(), "failed to allocate data store");
    EXPECT_EQ(DatabaseException("f", "g", 1, 14).ToString(), "unknown error");
    const DatabaseException e("f", "g", 1, 12, "empty name in index specification <%u>", 65535u);
    EXPECT_EQ(e.ToString(), "invalid parameter - empty name in index specification <65535>");
    EXPECT_EQ(e.GetMessage(), "empty name in index specification <65535>");
}

TEST(DatabaseException, LongMessageIsCutTo511Characters) {
    const std::string name(600, 'x');
    try {
        ThrowDatabase("Tavrin::Database::Test", DatabaseException::InvalidParameter, "<%s>", name.c_str());
        FAIL() << "no exception";
    } catch (const DatabaseException& e) {
        EXPECT_EQ(e.GetMessage().size(), 511u);
        EXPECT_EQ(e.GetMessage().substr(0, 3), "<xx");
    }
}

TEST(DatabaseException, ThrowHelperRecordsTheSite) {
    const int line = __LINE__ + 2;
    try {
        ThrowDatabase("Tavrin::Database::Table::Open", DatabaseException::NotCreated);
    } catch (const Tavrin::Exception& e) {
        EXPECT_EQ(e.GetFunction(), "Tavrin::Database::Table::Open");
        EXPECT_EQ(e.GetLine(), static_cast<std::uint32_t>(line));
        EXPECT_NE(e.GetFile().find("ExceptionTest.cpp"), std::string::npos);
        EXPECT_EQ(e.GetCode(), 10u);
    }
}

TEST(Exception, ChainAcceptsNullAndSurvivesCopies) {
    try {
        try {
            ThrowStatus("Tavrin::Inner", Status::NotFound);
        } catch (const Tavrin::Exception& caught) {
            caught.AddException(nullptr);
            caught.AddException(NewDatabaseException("Tavrin::Outer", DatabaseException::AllocateTable, "<%s>", "t"));
            throw;
        }
    } catch (const StatusCodeException& e) {
        EXPECT_EQ(e.GetCode(), Status::NotFound);
        const StatusCodeException copy(e);
        ASSERT_EQ(copy.GetChain().size(), 1u);
        EXPECT_EQ(copy.GetChain()[0]->ToString(), "failed to allocate table - <t>");
        const std::string what = copy.what();
        EXPECT_NE(what.find("not found"), std::string::npos);
        // Every line names its throw site, the chained database exception's too.
        EXPECT_NE(what.find("failed to allocate table - <t> at Tavrin::Outer ("), std::string::npos) << what;
        EXPECT_NE(what.find("at Tavrin::Inner ("), std::string::npos) << what;
    }
}

}  // namespace
}  // namespace Tavrin::Database
