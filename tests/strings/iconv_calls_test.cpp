// Tests how the code pages use iconv: which calls they make, in which order, and what each failure
// raises.
//
// This program replaces the C library's functions with its own, which record each call and pass it
// on, or fail as the test asks.
#include <tova/strings/code_page.hpp>

#include <tova/exceptions/exceptions.hpp>
#include <tova/strings/gh2.hpp>

#include "support/child_process.hpp"
#include "support/failing_allocation.hpp"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <functional>
#include <iconv.h>
#include <langinfo.h>
#include <new>
#include <set>
#include <string>
#include <vector>

namespace {

struct {
    std::vector<std::string> calls;
    std::set<iconv_t> open;
    int open_error = 0;  // errno of a failing iconv_open
    int error = 0;       // errno of a failing iconv
    // What iconv writes while it advances past the whole input before it rejects it; null if it
    // doesn't.
    const char* stepped_over = nullptr;
    // Takes the place of a conversion if it returns true, with the result that iconv returns.
    std::function<bool(char*& input, std::size_t& left, char*& output, std::size_t& room,
                       std::size_t& result)>
        answer;
    const char* charset = nullptr;  // what the locale names, if not its own
    bool close_fails = false;
    bool only_counts = false;  // records nothing but the number of open descriptors
    int open_count = 0;
} record;

template <typename Function>
Function next(const char* name) {
    Function function;
    void* const symbol = dlsym(RTLD_NEXT, name);
    std::memcpy(&function, &symbol, sizeof function);
    return function;
}

}  // namespace

extern "C" iconv_t iconv_open(const char* to, const char* from) {
    if (record.only_counts) {
        ++record.open_count;
        return next<iconv_t (*)(const char*, const char*)>("iconv_open")(to, from);
    }
    record.calls.push_back(std::string("open ") + to + " " + from);
    if (record.open_error != 0) {
        errno = record.open_error;
        return reinterpret_cast<iconv_t>(-1);
    }
    const iconv_t handle = next<iconv_t (*)(const char*, const char*)>("iconv_open")(to, from);
    record.open.insert(handle);
    return handle;
}

extern "C" std::size_t iconv(iconv_t handle, char** input, std::size_t* left, char** output,
                             std::size_t* room) {
    typedef std::size_t (*function)(iconv_t, char**, std::size_t*, char**, std::size_t*);
    if (record.only_counts)
        return next<function>("iconv")(handle, input, left, output, room);
    if (input == nullptr || left == nullptr) {
        const bool all_null =
            input == nullptr && left == nullptr && output == nullptr && room == nullptr;
        record.calls.push_back(all_null ? "reset" : "flush");
        return next<function>("iconv")(handle, input, left, output, room);
    }
    record.calls.push_back("convert " + std::to_string(*left) + " into " + std::to_string(*room));
    if (record.error != 0) {
        errno = record.error;
        return static_cast<std::size_t>(-1);
    }
    if (record.stepped_over != nullptr) {
        *input += *left;
        *left = 0;
        for (const char* unit = record.stepped_over; *unit != '\0'; ++unit, --*room)
            *(*output)++ = *unit;
        errno = EILSEQ;
        return static_cast<std::size_t>(-1);
    }
    std::size_t result = 0;
    if (record.answer && record.answer(*input, *left, *output, *room, result))
        return result;
    return next<function>("iconv")(handle, input, left, output, room);
}

extern "C" char* nl_langinfo(nl_item item) noexcept {
    if (item == CODESET && record.charset != nullptr)
        return const_cast<char*>(record.charset);
    return next<char* (*)(nl_item)>("nl_langinfo")(item);
}

extern "C" int iconv_close(iconv_t handle) {
    if (record.only_counts) {
        --record.open_count;
        return next<int (*)(iconv_t)>("iconv_close")(handle);
    }
    record.calls.push_back("close");
    record.open.erase(handle);
    const int result = next<int (*)(iconv_t)>("iconv_close")(handle);
    return record.close_fails ? -1 : result;
}

namespace {

namespace exceptions = tova::exceptions;
namespace gh2 = tova::strings::gh2;
using tova::strings::code_page;
using tova::strings::ustring8;

typedef std::vector<std::string> calls;

class IconvCalls : public ::testing::Test {
protected:
    void SetUp() override {
        record.calls.clear();
        record.open_error = 0;
        record.error = 0;
        record.stepped_over = nullptr;
        record.answer = nullptr;
        record.charset = nullptr;
        record.close_fails = false;
    }
    void TearDown() override {
        SetUp();
        while (!record.open.empty())
            iconv_close(*record.open.begin());
    }

    const code_page latin{code_page::encoding_28591};
    const code_page western{code_page::encoding_1252};
    const code_page chinese{code_page::encoding_936};
};

TEST_F(IconvCalls, ForAnEmptyStringAreOpenResetAndClose) {
    EXPECT_EQ("", latin.encode(ustring8()));
    EXPECT_EQ((calls{"open ISO-8859-1 UTF-8", "reset", "close"}), record.calls);
    record.calls.clear();
    EXPECT_EQ("", latin.as_utf8(""));
    EXPECT_EQ((calls{"open UTF-8 ISO-8859-1", "reset", "close"}), record.calls);
}

TEST_F(IconvCalls, ForPlainAsciiAreOneConversionAndNoFlush) {
    EXPECT_EQ("abc", latin.encode(ustring8("abc")));
    EXPECT_EQ((calls{"open ISO-8859-1 UTF-8", "reset", "convert 3 into 3", "close"}), record.calls);
}

TEST_F(IconvCalls, AreMadeAnewForEachConversion) {
    latin.as_utf8("a");
    latin.as_utf8("a");
    EXPECT_EQ((calls{"open UTF-8 ISO-8859-1", "reset", "convert 1 into 1", "close",
                     "open UTF-8 ISO-8859-1", "reset", "convert 1 into 1", "close"}),
              record.calls);
}

TEST_F(IconvCalls, OfferTwiceTheInputLeftAfterTheOutputWasFull) {
    EXPECT_EQ("\xC3\xA9\xC3\xA9\xC3\xA9", latin.as_utf8("\xE9\xE9\xE9"));
    EXPECT_EQ(
        (calls{"open UTF-8 ISO-8859-1", "reset", "convert 3 into 3", "convert 2 into 4", "close"}),
        record.calls);
}

// One byte of the old room is left. It is not passed to iconv again.
TEST_F(IconvCalls, OfferExactlyTwiceTheInputLeft) {
    EXPECT_EQ("a\xE2\x82\xAC"
              "b",
              western.as_utf8("a\x80"
                              "b"));
    EXPECT_EQ(
        (calls{"open UTF-8 CP1252", "reset", "convert 3 into 3", "convert 2 into 4", "close"}),
        record.calls);
}

TEST_F(IconvCalls, OfferAllTheRoomAfterACallWithoutProgress) {
    EXPECT_EQ("\xE2\x82\xAC", western.as_utf8("\x80"));
    EXPECT_EQ((calls{"open UTF-8 CP1252", "reset", "convert 1 into 1", "convert 1 into 2",
                     "convert 1 into 5", "close"}),
              record.calls);
}

TEST_F(IconvCalls, OfferTwiceTheInputLeftForAnInvalidByteWithoutRoom) {
    EXPECT_EQ("\xE2\x82\xAC?\xE2\x82\xAC", western.as_utf8("\x80\x81\x80"));
    EXPECT_EQ(
        (calls{"open UTF-8 CP1252", "reset", "convert 3 into 3", "convert 1 into 3", "close"}),
        record.calls);
}

// Then there is no byte left to skip or to make room for.
TEST_F(IconvCalls, ThatRejectACharacterAfterTheLastByteYieldOneQuestionMark) {
    record.stepped_over = "";
    EXPECT_EQ("?", latin.encode(ustring8("ab")));
    EXPECT_EQ((calls{"open ISO-8859-1 UTF-8", "reset", "convert 2 into 2", "close"}), record.calls);
    EXPECT_EQ("?", latin.as_utf8("ab"));
    record.stepped_over = "xy";
    EXPECT_EQ("xy?", latin.encode(ustring8("ab"))) << "without room";
    EXPECT_EQ("xy?", latin.as_utf8("ab"));
}

TEST_F(IconvCalls, EndAtACutCharacter) {
    EXPECT_EQ("ab", chinese.as_utf8("ab\xD6"));
    EXPECT_EQ((calls{"open UTF-8 GBK", "reset", "convert 3 into 3", "close"}), record.calls);
}

// Tests of the windows after an error.

TEST_F(IconvCalls, AfterAnErrorOfferWindowsThatDouble) {
    const std::string rest(100, 'a');
    EXPECT_EQ("a??" + rest, latin.encode(ustring8("a\xC5\x82" + rest)));
    EXPECT_EQ((calls{"open ISO-8859-1 UTF-8", "reset", "convert 103 into 103",
                     "convert 16 into 100", "convert 32 into 84", "convert 52 into 52", "close"}),
              record.calls);
}

TEST_F(IconvCalls, OfferACharacterCutByAWindowAgain) {
    // The first window ends with the lead byte of the accented letter.
    const ustring8 text("\xC5\x82" + std::string(15, 'a') + "\xC3\xA9" + std::string(40, 'b'));
    EXPECT_EQ("??" + std::string(15, 'a') + "\xE9" + std::string(40, 'b'), latin.encode(text));
    EXPECT_EQ((calls{"open ISO-8859-1 UTF-8", "reset", "convert 59 into 59", "convert 16 into 57",
                     "convert 32 into 42", "convert 10 into 11", "close"}),
              record.calls);
}

TEST_F(IconvCalls, OfTheLastBytesAreMadeForEachInvalidByte) {
    EXPECT_EQ("??a", latin.encode(ustring8("\xC5\x82"
                                           "a")));
    EXPECT_EQ((calls{"open ISO-8859-1 UTF-8", "reset", "convert 3 into 3", "convert 2 into 2",
                     "convert 1 into 1", "close"}),
              record.calls);
}

std::size_t bytes_offered() {
    std::size_t sum = 0;
    for (const std::string& call : record.calls)
        if (call.compare(0, 8, "convert ") == 0)
            sum += std::stoul(call.substr(8));
    return sum;
}

std::string repeated(const std::string& piece, std::size_t times) {
    std::string result;
    while (times-- > 0)
        result += piece;
    return result;
}

TEST_F(IconvCalls, OfferLessThanTwentyBytesForEachByteThatThePageLacks) {
    const code_page pages[] = {latin, western, chinese, code_page(code_page::encoding_1258),
                               code_page(code_page::encoding_125100)};
    const std::string pieces[] = {"\xF0\x9F\x98\x80", "a\xF0\x9F\x98\x80", "\xFF", "\xED\xA0\x80"};
    for (const code_page& page : pages)
        for (const std::string& piece : pieces) {
            SCOPED_TRACE(page.type());
            SCOPED_TRACE(piece);
            std::size_t offered[2];
            for (const std::size_t times : {4096, 8192}) {
                record.calls.clear();
                page.encode(ustring8(repeated(piece, times)));
                offered[times / 8192] = bytes_offered();
                EXPECT_LE(offered[times / 8192], 20 * times * piece.size());
            }
            EXPECT_LE(offered[1], offered[0] * 5 / 2);
        }
}

TEST_F(IconvCalls, OfferEachInvalidByteOfAPageInAWindow) {
    for (const std::size_t times : {4096, 8192}) {
        record.calls.clear();
        EXPECT_EQ(std::string(times, '?'), western.as_utf8(std::string(times, '\x81')));
        EXPECT_LE(bytes_offered(), 20 * times);
    }
}

template <typename Action>
std::string runtime_error_of(Action action) {
    try {
        action();
    } catch (const exceptions::runtime_error& error) {
        return error.get_message();
    }
    return "nothing was raised";
}

TEST_F(IconvCalls, RaiseForAPairThatIconvDoesNotKnow) {
    record.open_error = EINVAL;
    EXPECT_EQ("convertions not supported", runtime_error_of([&] { latin.encode(ustring8("a")); }));
    EXPECT_EQ("convertions not supported", runtime_error_of([&] { latin.encode(ustring8()); }));
    EXPECT_EQ("convertions not supported", runtime_error_of([&] { latin.as_utf8("a"); }));
    EXPECT_EQ((calls{"open ISO-8859-1 UTF-8", "open ISO-8859-1 UTF-8", "open UTF-8 ISO-8859-1"}),
              record.calls);
}

TEST_F(IconvCalls, RaiseForTheLocaleJustAsForItsCodePage) {
    record.open_error = EINVAL;
    EXPECT_EQ("convertions not supported", runtime_error_of([] { gh2::to_ansi("a"); }));
    EXPECT_EQ("convertions not supported", runtime_error_of([] { gh2::from_ansi(""); }));
    EXPECT_EQ((calls{"open ANSI_X3.4-1968 UTF-8", "open UTF-8 ANSI_X3.4-1968"}), record.calls);
}

TEST_F(IconvCalls, RaiseForAnyOtherFailureToOpen) {
    for (const int error : {EMFILE, ENFILE, ENOMEM}) {
        record.open_error = error;
        EXPECT_EQ("Unknown failure on iconv open",
                  runtime_error_of([&] { latin.encode(ustring8("a")); }));
        EXPECT_EQ("Unknown failure on iconv open", runtime_error_of([&] { latin.as_utf8("a"); }));
    }
}

TEST_F(IconvCalls, RaiseForAnUnknownErrorAndLeaveTheDescriptorOpen) {
    record.error = EBADF;
    EXPECT_EQ("Unknown iconv error", runtime_error_of([&] { latin.encode(ustring8("a")); }));
    EXPECT_EQ((calls{"open ISO-8859-1 UTF-8", "reset", "convert 1 into 1"}), record.calls);
    record.calls.clear();
    EXPECT_EQ("Unknown iconv error", runtime_error_of([&] { latin.as_utf8("a"); }));
    EXPECT_EQ((calls{"open UTF-8 ISO-8859-1", "reset", "convert 1 into 1"}), record.calls);
    EXPECT_EQ(2u, record.open.size());
}

TEST_F(IconvCalls, CloseTheDescriptorIfMemoryRunsOut) {
    const ustring8 text(repeated("\xC3\xA9\xC5\x82", 3000));  // long enough to be learned
    const std::string bytes(9000, '\xE9');
    unsigned raised = 0;
    for (unsigned successes = 0, failed = 1; failed != 0; ++successes) {
        SCOPED_TRACE(successes);
        failed = 0;
        for (const bool to_page : {true, false}) {
            record.only_counts = true;
            try {
                const test_support::failing_allocation failure(successes);
                if (to_page)
                    latin.encode(text);
                else
                    latin.as_utf8(bytes);
                failed += failure.failed();
            } catch (const std::bad_alloc&) {
                ++failed;
                ++raised;
            }
            record.only_counts = false;
            EXPECT_EQ(0, record.open_count);
        }
    }
    EXPECT_LE(4u, raised);
}

// Tests of long strings, for which iconv converts each different character once.

// 9,000 bytes of the page, and the same in UTF-8.
const std::string long_bytes = repeated("ab\x99", 3000);
const std::string long_utf8 = repeated("ab\xE2\x84\xA2", 3000);

// The first call of such a conversion asks for all of ASCII.
const std::size_t ascii_size = 128;

TEST_F(IconvCalls, AreNotSavedForAPageThatOnlyTheLocaleNames) {
    record.charset = "KOI8-T";
    const ustring8 text(repeated("\xD0\x90", 3000));
    EXPECT_EQ(std::string(3000, '\xE1'), gh2::to_ansi(text));
    EXPECT_EQ((calls{"open KOI8-T UTF-8", "reset", "convert 6000 into 6000", "close"}),
              record.calls);
    EXPECT_EQ(text, gh2::from_ansi(std::string(3000, '\xE1')));
}

TEST_F(IconvCalls, AreNotSavedForAPageThatDoesNotKeepAscii) {
    const struct {
        const char* what;
        std::size_t result, left, room;
        char first;
    } cases[] = {
        {"an error", static_cast<std::size_t>(-1), ascii_size, ascii_size, '\0'},
        {"an irreversible character", 1, 0, 0, '\0'},
        {"input that is left", 0, 1, 0, '\0'},
        {"shorter output", 0, 0, 1, '\0'},
        {"another character", 0, 0, 0, 'x'},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        record.answer = [&c](char*& input, std::size_t& left, char*& output, std::size_t& room,
                             std::size_t& result) {
            if (left != ascii_size || room != ascii_size)
                return false;
            std::memcpy(output, input, ascii_size);
            output[0] = c.first;
            left = c.left;
            room = c.room;
            errno = EILSEQ;
            result = c.result;
            return true;
        };
        record.calls.clear();
        EXPECT_EQ(long_utf8, western.as_utf8(long_bytes));
        EXPECT_EQ("convert 9000 into 9000", record.calls.at(3));
        EXPECT_EQ(long_bytes, western.encode(ustring8(long_utf8)));
    }
}

// What iconv may do with the byte 0x99 alone. If it is neither converted nor rejected as usual, the
// byte is passed again with those after it.
TEST_F(IconvCalls, ConvertEachCharacterOfAPageOnce) {
    const struct {
        const char* what;
        int error;
        std::size_t left;
        std::string written;
        std::string expected;
    } cases[] = {
        {"converted to nothing", 0, 0, "", "ab"},
        {"converted to four bytes", 0, 0, "\xF0\x9F\x98\x80", "ab\xF0\x9F\x98\x80"},
        {"converted to five bytes", 0, 0, "vwxyz", "ab\xE2\x84\xA2"},
        {"not taken", 0, 1, "", "ab\xE2\x84\xA2"},
        {"rejected", EILSEQ, 1, "", "ab?"},
        {"rejected after it was taken", EILSEQ, 0, "", "ab\xE2\x84\xA2"},
        {"rejected after output", EILSEQ, 1, "x", "ab\xE2\x84\xA2"},
        {"without enough room", E2BIG, 1, "", "ab\xE2\x84\xA2"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        int asked = 0;
        record.answer = [&](char*& input, std::size_t& left, char*& output, std::size_t& room,
                            std::size_t& result) {
            if (left != 1 || *input != '\x99' || asked != 0)
                return false;
            ++asked;
            c.written.copy(output, c.written.size());
            output += c.written.size();
            room -= c.written.size();
            input += 1 - c.left;
            left = c.left;
            errno = c.error;
            result = c.error == 0 ? 0 : static_cast<std::size_t>(-1);
            return true;
        };
        EXPECT_EQ(repeated(c.expected, 3000), western.as_utf8(long_bytes));
        EXPECT_EQ(1, asked);
    }
}

TEST_F(IconvCalls, EndALongStringAtACutCharacter) {
    EXPECT_EQ(std::string(5000, 'a'), chinese.as_utf8(std::string(5000, 'a') + "\xD6"));
}

// The table is not required: without memory for it, the loop converts everything.
TEST_F(IconvCalls, NeedNoMemoryForATable) {
    if (test_support::under_sanitizer())
        GTEST_SKIP() << "the sanitizer's allocator does not return null";
    test_support::expect_in_child([&] {
        // The module of the page stays loaded while a descriptor is open.
        const iconv_t open = iconv_open("UTF-8", "CP1252");
        record.calls.reserve(1000);
        unsigned long pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        const rlim_t limit = pages * 4096 + (256 << 10);  // half of the table
        const rlimit limits = {limit, limit};
        ASSERT_EQ(0, setrlimit(RLIMIT_AS, &limits));
        // Freed memory could have enough room for the table as well.
        while (std::malloc(384 << 10) != nullptr)
            ;
        record.calls.clear();
        EXPECT_EQ(long_utf8, western.as_utf8(long_bytes));
        EXPECT_EQ("convert 9000 into 9000", record.calls.at(2));
        iconv_close(open);
    });
}

// The room grows to twice the bytes left, even if only a "?" is to be written.
TEST_F(IconvCalls, OfferTheRoomThatIsLeftAfterAnInvalidByte) {
    EXPECT_EQ("a?b", western.as_utf8("a\x81"
                                     "b"));
    EXPECT_EQ(
        (calls{"open UTF-8 CP1252", "reset", "convert 3 into 3", "convert 1 into 1", "close"}),
        record.calls);
}

TEST_F(IconvCalls, RaiseForAFailureToClose) {
    record.close_fails = true;
    EXPECT_EQ("iconv failed to close", runtime_error_of([&] { latin.encode(ustring8("a")); }));
    EXPECT_EQ((calls{"open ISO-8859-1 UTF-8", "reset", "convert 1 into 1", "close"}), record.calls);
    EXPECT_EQ("iconv failed to close", runtime_error_of([&] { latin.as_utf8(""); }));
}

TEST_F(IconvCalls, AreNotMadeForANumberWithoutAName) {
    EXPECT_THROW(code_page().encode(ustring8()), exceptions::invalid_argument_value);
    EXPECT_EQ(calls(), record.calls);
}

// The location is stored inside the exception, in the record after its table pointer.
struct location {
    unsigned int line;
    char file[256];
    char function[256];
};

template <typename Exception, typename Action>
std::string location_of(Action action) {
    try {
        action();
    } catch (const Exception& error) {
        location where;
        std::memcpy(&where, reinterpret_cast<const char*>(&error) + sizeof(void*), sizeof where);
        return std::string(where.file) + ":" + std::to_string(where.line) + " " + where.function;
    }
    return "nothing was raised";
}

TEST_F(IconvCalls, RaiseFromThePublishedLocations) {
    const auto encode = [&] { latin.encode(ustring8("a")); };
    const auto as_utf8 = [&] { latin.as_utf8("a"); };
    typedef exceptions::runtime_error error;
    EXPECT_EQ("strings/code_page:589 to_system_type",
              location_of<exceptions::invalid_argument_value>([] { code_page().as_utf8(""); }));
    record.open_error = EINVAL;
    EXPECT_EQ("strings/code_page:222 encode", location_of<error>(encode));
    EXPECT_EQ("strings/code_page:370 as_utf8", location_of<error>(as_utf8));
    record.open_error = ENOMEM;
    EXPECT_EQ("strings/code_page:225 encode", location_of<error>(encode));
    EXPECT_EQ("strings/code_page:373 as_utf8", location_of<error>(as_utf8));
    record.open_error = 0;
    record.close_fails = true;
    EXPECT_EQ("strings/code_page:316 encode", location_of<error>(encode));
    EXPECT_EQ("strings/code_page:463 as_utf8", location_of<error>(as_utf8));
    record.close_fails = false;
    record.error = EBADF;
    EXPECT_EQ("strings/code_page:305 encode", location_of<error>(encode));
    EXPECT_EQ("strings/code_page:452 as_utf8", location_of<error>(as_utf8));
}

}  // namespace
