// Tests what the file readers do if a system call fails in the middle, and what they do with
// special files: pipes, terminals and sockets.
#include "support/failing_call.hpp"

#include <tova/config/config_manager.hpp>
#include <tova/config/file_item.hpp>
#include <tova/config/std_config_dispatch.hpp>
#include <tova/i18n/message_catalogs.hpp>
#include <tova/parser/xml_stream_parser.hpp>
#include <tova/system/files.hpp>

#include "support/child_process.hpp"
#include "support/temporary_directory.hpp"

#include <boost/filesystem/exception.hpp>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace tova;
using strings::ustring8;
using test_support::expect_in_child;
using test_support::failing_call;
using test_support::read_bytes;
using test_support::slow_transfers;
using test_support::system_call;
using test_support::temporary_directory;

const std::string catalog_file = "<?xml version=\"1.0\"?><xmc version=\"1.1\">"
                                 "<catalog name=\"a\" lang=\"en\"><msg name=\"m\">x</msg></catalog>"
                                 "</xmc>";

// Runs `body` with the first call of a kind failing, then with the second one, and so on, until
// every call has failed once. Returns the number of calls.
unsigned with_each_call_failing(system_call which, int error_number,
                                const std::function<void()>& body) {
    for (unsigned successes = 0;; ++successes) {
        SCOPED_TRACE("call " + std::to_string(successes));
        const failing_call failure(which, error_number, successes);
        body();
        if (!failure.failed())
            return successes;
    }
}

// ---- the outcome of a call that fails

TEST(FailingCall, IsHandledByLoadFileAsDocumented) {
    const temporary_directory files;
    const ustring8 path = files.write("file", "bytes");
    ustring8 content = "before";
    {
        const failing_call failure(system_call::lstat, EIO);
        EXPECT_THROW(system::load_file(files.path("missing"), content),
                     boost::filesystem::filesystem_error);
    }
    {
        const failing_call failure(system_call::open, EMFILE);
        EXPECT_EQ(1, system::load_file(path, content));
    }
    {
        const failing_call failure(system_call::lseek, ESPIPE);
        EXPECT_THROW(system::load_file(path, content), std::length_error);
    }
    EXPECT_EQ("before", content);
    {
        const failing_call failure(system_call::read, EIO);
        EXPECT_EQ(0, system::load_file(path, content));
        EXPECT_EQ(ustring8(5, '\0'), content);
    }
    {
        const failing_call shrunk(system_call::read, 0);
        EXPECT_EQ(0, system::load_file(path, content));
        EXPECT_EQ(ustring8(5, '\0'), content);
    }
}

TEST(FailingCall, IsHandledByStoreFileAsDocumented) {
    const temporary_directory files;
    const ustring8 path = files.write("file", "before");
    {
        const failing_call failure(system_call::lstat, EIO);
        EXPECT_THROW(system::store_file(path, "new"), boost::filesystem::filesystem_error);
    }
    {
        const failing_call failure(system_call::open, EROFS);
        EXPECT_EQ(1, system::store_file(path, "new"));
    }
    EXPECT_EQ("before", read_bytes(path));
    {
        const failing_call failure(system_call::write, ENOSPC);
        EXPECT_EQ(0, system::store_file(path, "new"));
    }
    EXPECT_EQ("", read_bytes(path));
}

TEST(FailingCall, LeavesWholeFilesIfCallsAreSlowAndInterrupted) {
    const temporary_directory files;
    const ustring8 path = files.path("file");
    const ustring8 bytes(1000, 'x');
    ustring8 content;
    {
        const slow_transfers slow;
        EXPECT_EQ(0, system::store_file(path, bytes));
        EXPECT_EQ(0, system::load_file(path, content));
    }
    EXPECT_EQ(bytes, content);
    EXPECT_EQ(bytes, read_bytes(path));
}

// A source whose file cannot be read is empty, whichever call fails.
TEST(FailingCall, LeavesSettingsWithoutAnEmptyFile) {
    const temporary_directory files;
    const ustring8 path = files.write("tool.cfg", "");
    for (const system_call which : {system_call::stat, system_call::open, system_call::lseek}) {
        SCOPED_TRACE(static_cast<int>(which));
        const unsigned calls = with_each_call_failing(which, EIO, [&path] {
            config::file_item item(path);
            EXPECT_TRUE(item.load());
            EXPECT_TRUE(item.get_value("a") == nullptr);
        });
        EXPECT_LE(which == system_call::stat ? 1u : 2u, calls);
    }
}

TEST(FailingCall, LeavesSettingsWithoutTheFile) {
    const temporary_directory files;
    const std::string path = files.write("tool.cfg", "[s]\na=1\n");
    for (const system_call which : {system_call::lstat, system_call::open, system_call::lseek}) {
        SCOPED_TRACE(static_cast<int>(which));
        const unsigned calls = with_each_call_failing(which, EIO, [&path] {
            const char* const arguments[] = {"tool", nullptr};
            config::config_manager settings;
            settings.init(config::std_config_dispatch(1, arguments, nullptr, path, ""));
            bool loaded = false;
            EXPECT_NO_THROW(loaded = settings.load());
            EXPECT_TRUE(loaded);
            const ustring8 value = settings.get_value("s.a", "none").as_string();
            EXPECT_TRUE(value == "1" || value == "none") << value;
        });
        // There is no separate check whether a regular file is a link.
        EXPECT_LE(which == system_call::lstat ? 0u : 1u, calls);
    }
}

TEST(FailingCall, LeavesSettingsThatSaveWithoutAnException) {
    const temporary_directory files;
    const ustring8 path = files.path("tool.cfg");
    config::file_item item(path);
    item.set("s.a = 1", 0);
    for (const system_call which : {system_call::lstat, system_call::open, system_call::write})
        with_each_call_failing(which, EIO, [&item] { EXPECT_NO_THROW(EXPECT_TRUE(item.save())); });
    EXPECT_EQ("[s]\na=1\n\n", read_bytes(path));
}

// A catalog file that exists but cannot be read counts as a file without a header, whichever call
// fails.
TEST(FailingCall, LeavesCatalogsWithAnError) {
    const temporary_directory files;
    const ustring8 path = files.write("folder/a.xmc", catalog_file);
    const ustring8 folder = files.path("folder");
    using loading = std::function<i18n::message_catalogs::result_type(i18n::message_catalogs&)>;
    const loading forms[] = {
        [&](i18n::message_catalogs& set) { return set.load_file(path, "en"); },
        [&](i18n::message_catalogs& set) { return set.load(path, "en", "a"); },
        [&](i18n::message_catalogs& set) { return set.load_directory(folder, "en"); },
        [&](i18n::message_catalogs& set) { return set.load(std::vector<ustring8>{folder}, "en"); },
    };
    for (const loading& load : forms) {
        for (const system_call which :
             {system_call::lstat, system_call::open, system_call::lseek, system_call::read}) {
            SCOPED_TRACE(static_cast<int>(which));
            // In the last run, no call fails.
            int successes = 0;
            const unsigned calls = with_each_call_failing(which, EIO, [&] {
                i18n::message_catalogs set;
                int kind = -1;
                EXPECT_NO_THROW(kind = load(set).type);
                EXPECT_EQ(kind == 0, set.has_message("a", "m"));
                successes += kind == 0;
            });
            EXPECT_LE(1u, calls);
            EXPECT_LE(1, successes);
        }
    }
}

TEST(FailingCall, LeavesIncludesWithAnError) {
    const temporary_directory files;
    files.write("inner.xmc", catalog_file);
    const ustring8 path = files.write(
        "outer.xmc",
        "<?xml version=\"1.0\"?><xmc version=\"1.1\"><include file=\"inner.xmc\"/></xmc>");
    for (const system_call which : {system_call::lstat, system_call::lseek}) {
        const unsigned calls = with_each_call_failing(which, EIO, [&path] {
            i18n::message_catalogs set;
            int kind = -1;
            EXPECT_NO_THROW(kind = set.load_file(path, "en").type);
            EXPECT_EQ(kind == 0, set.has_message("a", "m"));
        });
        EXPECT_LE(2u, calls);
    }
}

// The check for a circle needs the identities of two folders. If they are unknown, the next round
// finds the circle.
TEST(FailingCall, LeavesACircleOfIncludesWithAnError) {
    const temporary_directory files;
    const ustring8 path = files.write(
        "circle.xmc",
        "<?xml version=\"1.0\"?><xmc version=\"1.1\"><include file=\"circle.xmc\"/></xmc>");
    const unsigned calls = with_each_call_failing(system_call::stat, EIO, [&path] {
        i18n::message_catalogs set;
        const ustring8 message = set.load_file(path, "en").message;
        EXPECT_NE(ustring8::npos, message.find("circle.xmc")) << message;
        EXPECT_TRUE(set == types::nil);
    });
    EXPECT_LE(2u, calls);
}

// The parser tries again with the next call, and reads a file that grows meanwhile from where it
// stopped.
TEST(FailingCall, LeavesALogThatIsReadLater) {
    const temporary_directory files;
    const std::string path = files.write("log.xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                                                    "<log><entry/><entry/></log>");
    for (const int error_number : {EIO, 0}) {
        parser::xml_stream_parser log(path, 1);
        {
            const failing_call failure(system_call::read, error_number);
            EXPECT_EQ(parser::xml_stream_parser::no_error, log.parse());
            EXPECT_TRUE(failure.failed());
        }
        EXPECT_EQ(0u, log.parse_offset());
        EXPECT_EQ(parser::xml_stream_parser::end_of_document, log.parse());
        EXPECT_EQ(4u, log.node_queue_size());
    }
}

TEST(FailingCall, LeavesWholeLogsIfCallsAreSlowAndInterrupted) {
    const temporary_directory files;
    const std::string path = files.write("log.xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                                                    "<log><entry/><entry/></log>");
    const slow_transfers slow;
    parser::xml_stream_parser log(path, 1);
    EXPECT_EQ(parser::xml_stream_parser::end_of_document, log.parse());
    EXPECT_EQ(4u, log.node_queue_size());
}

TEST(FailingCall, LeavesALinkToALogRejected) {
    const temporary_directory files;
    const std::string target = files.write("target", "");
    const std::string link = files.path("link");
    ASSERT_EQ(0, ::symlink(target.c_str(), link.c_str()));
    const failing_call failure(system_call::lstat, EIO);
    parser::xml_stream_parser log(link, 1);
    EXPECT_TRUE(failure.failed());
    EXPECT_EQ(parser::xml_stream_parser::internal_failure, log.error());
}

// ---- special files

// Pipes, terminals and sockets, each with the name of its kind.
class special_files {
public:
    special_files() {
        EXPECT_EQ(0, ::mkfifo(path("pipe").c_str(), 0600));
        m_terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
        EXPECT_LE(0, m_terminal);
        EXPECT_EQ(0, ::grantpt(m_terminal));
        EXPECT_EQ(0, ::unlockpt(m_terminal));
        m_socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path("socket").copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(0, ::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    }
    ~special_files() {
        ::close(m_terminal);
        ::close(m_socket);
    }
    special_files(const special_files&) = delete;
    special_files& operator=(const special_files&) = delete;

    std::string path(const std::string& name) const { return m_directory.path(name); }
    std::string write(const std::string& name, const std::string& bytes) const {
        return m_directory.write(name, bytes);
    }
    ustring8 pipe() const { return path("pipe"); }
    ustring8 socket() const { return path("socket"); }
    ustring8 terminal() const { return ::ptsname(m_terminal); }
    std::vector<ustring8> all() const { return {pipe(), socket(), terminal()}; }

private:
    temporary_directory m_directory;
    int m_terminal;
    int m_socket;
};

// Runs a child that is killed after some seconds of real time, because a blocking call uses no
// processor time. The default action of the alarm ends the process.
void expect_without_waiting(const std::function<void()>& body) {
    expect_in_child([&body] {
        ::alarm(20);
        body();
    });
}

TEST(SpecialFile, NeverBlocksLoadFile) {
    const special_files files;
    expect_without_waiting([&files] {
        ustring8 content = "before";
        EXPECT_THROW(system::load_file(files.pipe(), content), std::length_error);
        EXPECT_EQ(1, system::load_file(files.socket(), content));
        EXPECT_THROW(system::load_file(files.terminal(), content), std::length_error);
        EXPECT_EQ("before", content);
    });
}

TEST(SpecialFile, HasTheSameOutcomeWithAWriter) {
    const special_files files;
    expect_without_waiting([&files] {
        const int writer = ::open(files.pipe().c_str(), O_RDWR | O_NONBLOCK);
        ASSERT_EQ(5, ::write(writer, "bytes", 5));
        ustring8 content = "before";
        EXPECT_THROW(system::load_file(files.pipe(), content), std::length_error);
        EXPECT_EQ("before", content);
        char rest[8];
        EXPECT_EQ(5, ::read(writer, rest, sizeof rest));
        ::close(writer);
    });
}

TEST(SpecialFile, NeverBlocksCatalogs) {
    const special_files files;
    expect_without_waiting([&files] {
        for (const ustring8& path : files.all()) {
            SCOPED_TRACE(path);
            i18n::message_catalogs set;
            EXPECT_EQ(i18n::message_catalogs::xml_error, set.load_file(path, "en").type);
            const ustring8 outer =
                files.write("outer.xmc", "<?xml version=\"1.0\"?><xmc version=\"1.1\">"
                                         "<include file=\"" +
                                             path + "\"/></xmc>");
            EXPECT_EQ(i18n::message_catalogs::xml_error, set.load_file(outer, "en").type);
        }
    });
}

// A socket can't be opened, and then the check for a link fails, too.
TEST(SpecialFile, LeavesCatalogsWithAnErrorIfACallFails) {
    const special_files files;
    const unsigned calls = with_each_call_failing(system_call::lstat, EIO, [&files] {
        i18n::message_catalogs set;
        int kind = 0;
        EXPECT_NO_THROW(kind = set.load_file(files.socket(), "en").type);
        EXPECT_NE(0, kind);
    });
    EXPECT_LE(2u, calls);
}

TEST(SpecialFile, NeverBlocksSettings) {
    const special_files files;
    expect_without_waiting([&files] {
        for (const ustring8& path : files.all()) {
            SCOPED_TRACE(path);
            config::file_item item(path);
            EXPECT_TRUE(item.load());
            EXPECT_TRUE(item.get_value("a") == nullptr);
        }
    });
}

TEST(SpecialFile, NeverBlocksTheStreamParser) {
    const special_files files;
    expect_without_waiting([&files] {
        for (const ustring8& path : {files.pipe(), files.socket()}) {
            SCOPED_TRACE(path);
            parser::xml_stream_parser log(path, 1);
            EXPECT_EQ(parser::xml_stream_parser::open_failed, log.error());
            EXPECT_EQ(parser::xml_stream_parser::open_failed, log.parse());
            EXPECT_EQ(0u, log.file_length());
        }
        // A terminal can be opened, but it has no length.
        parser::xml_stream_parser log(files.terminal(), 1);
        EXPECT_EQ(parser::xml_stream_parser::no_error, log.parse());
        EXPECT_EQ(0u, log.file_length());
    });
}

TEST(SpecialFile, NeverBlocksIfALogBecomesAPipe) {
    const special_files files;
    const std::string path = files.write("log.xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                                                    "<log><entry/><entry/>");
    expect_without_waiting([&path] {
        parser::xml_stream_parser log(path, 1);
        EXPECT_EQ(parser::xml_stream_parser::no_error, log.parse());
        ASSERT_EQ(0, ::unlink(path.c_str()));
        ASSERT_EQ(0, ::mkfifo(path.c_str(), 0600));
        EXPECT_EQ(parser::xml_stream_parser::open_failed, log.parse());
        EXPECT_EQ(0u, log.file_length());
    });
}

// ---- names that change between the check and the use

TEST(SpecialFile, IsRejectedAsALinkEvenIfTheCheckMissedIt) {
    const temporary_directory files;
    const std::string target = files.write("target", "kept");
    // A directory can be swapped under the path in the same way; there is no test for that.
    const std::string link = files.path("link");
    ASSERT_EQ(0, ::symlink(target.c_str(), link.c_str()));
    ustring8 content = "before";
    {
        // If the link appears after the check, the check reports "No such file".
        const failing_call failure(system_call::lstat, ENOENT);
        EXPECT_EQ(1, system::load_file(link, content));
        EXPECT_TRUE(failure.failed());
    }
    EXPECT_EQ("before", content);
    {
        const failing_call failure(system_call::lstat, ENOENT);
        EXPECT_EQ(1, system::store_file(link, "new"));
        EXPECT_TRUE(failure.failed());
    }
    EXPECT_EQ("kept", read_bytes(target));
}

}  // namespace
