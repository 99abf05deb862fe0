// Makes each system call of the file operations fail: `proof_io_failures` runs each operation with
// its first `open` failing, then with its second one, and so on, with each of several errors, and
// then the same for every other call. It prints a line for each operation and call: the name, the
// call, the number of failures, the outcomes, and "ok" or the deviations from the documentation.
//
// An operation returns its outcome in words, including the state of its files. The outcomes that
// its header documents for a failure are listed with it. The outcome of an undisturbed run is also
// correct, because an operation may skip a call or repeat it. If `read` or `write` is interrupted
// or transfers one byte at a time, only the undisturbed outcome is correct. Every run is a separate
// process, so a run that crashes or never returns is detected.
#include "support/failing_call.hpp"

#include <tova/extras/data_file.hpp>
#include <tova/tova.hpp>

#include <boost/filesystem/exception.hpp>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace tova;
using strings::ustring8;
using test_support::failing_call;
using test_support::slow_transfers;
using test_support::system_call;

// ---- files, without the calls that may fail

std::string content_of(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return "no file";
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

void write_file(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

bool exists(const std::string& path) {
    return ::access(path.c_str(), F_OK) == 0;
}

std::string shown(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes)
        text += byte == '\0' ? "\\0" : byte == '\n' ? "\\n" : std::string(1, byte);
    return text;
}

const std::string catalog_file = "<?xml version=\"1.0\"?><xmc version=\"1.1\">"
                                 "<catalog name=\"a\" lang=\"en\"><msg name=\"m\">x</msg></catalog>"
                                 "</xmc>";
const std::string second_file = "<?xml version=\"1.0\"?><xmc version=\"1.1\">"
                                "<catalog name=\"b\" lang=\"en\"><msg name=\"m\">x</msg></catalog>"
                                "</xmc>";
const std::string including_file = "<?xml version=\"1.0\"?><xmc version=\"1.1\">"
                                   "<include file=\"folder/a.xmc\"/></xmc>";
const std::string log_file = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><log><entry/><entry/>";

serialization::labeled_text_buffer data_of(const char* value) {
    serialization::labeled_text_buffer buffer;
    buffer.add_value("label", types::variant(value));
    return buffer;
}

// The files that each operation finds. Every run has its own directory.
void make_files() {
    write_file("file", "bytes");
    write_file("tool.cfg", "[s]\na=1\n");
    ::mkdir("folder", 0700);
    write_file("folder/a.xmc", catalog_file);
    write_file("outer.xmc", including_file);
    write_file("second.xmc", second_file);
    extras::store_data("data", data_of("old"));
    write_file("log.xml", log_file);
    ::mkdir("empty", 0700);
}

// ---- operations

struct operation {
    const char* name;
    std::vector<std::string> documented;  // the outcomes of a failure
    std::function<std::string()> run;     // while calls fail; returns the outcome
    std::function<std::string()> after;   // returns what is on the disk, added to the outcome
};

std::string no_more() {
    return "";
}

std::string stored_file() {
    return ", file: " + shown(content_of("file"));
}

std::string number(long value) {
    return std::to_string(value);
}

std::string load() {
    ustring8 content("before");
    try {
        const int result = system::load_file(ustring8("file"), content);
        return number(result) + " " + shown(content);
    } catch (const std::exception&) {
        return content == "before" ? throw : std::string("raised, with another content");
    }
}

std::string names_of(std::vector<ustring8> files) {
    const std::set<std::string> sorted(files.begin(), files.end());
    std::string names;
    for (const std::string& name : sorted)
        names += name + " ";
    return names;
}

std::string outcome_of(const i18n::message_catalogs::result_type& result,
                       const i18n::message_catalogs& set) {
    return number(result.type) +
           (set.has_message(ustring8("a"), ustring8("m")) ? " with" : " without");
}

std::string settings() {
    const char* const words[] = {"tool", nullptr};
    config::config_manager manager;
    manager.init(config::std_config_dispatch(1, words, nullptr, "tool.cfg", ""));
    const bool loaded = manager.load();
    return number(loaded) + " " + manager.get_value("s.a", types::variant("none")).as_string();
}

std::string follow() {
    parser::xml_stream_parser log(ustring8("log.xml"), 1);
    log.parse();
    std::string outcome = number(log.error());
    while (!log.node_queue_empty())
        outcome += " " + log.node_queue_pop().name;
    return outcome;
}

std::string saved_settings() {
    const char* const words[] = {"tool", nullptr};
    config::config_manager manager;
    manager.init(config::std_config_dispatch(1, words, nullptr, "tool.cfg", ""));
    const bool loaded = manager.load();
    return number(loaded) + number(manager.save());
}

std::string list_of_files() {
    i18n::message_catalogs set;
    const std::vector<ustring8> files = {ustring8("folder/a.xmc"), ustring8("second.xmc")};
    const auto result = set.load(files, ustring8("en"));
    return number(result.type) + (set.has_message(ustring8("a"), ustring8("m")) ? " first" : "") +
           (set.has_message(ustring8("b"), ustring8("m")) ? " second" : "");
}

std::string value_in(const serialization::labeled_text_buffer& buffer) {
    return buffer.has_value("label") ? buffer.retrieve_value("label").as_string()
                                     : ustring8("nothing");
}

std::string loaded_data() {
    serialization::labeled_text_buffer buffer = data_of("before");
    const extras::data_status status = extras::load_data("data", buffer);
    return extras::name(status.error) + (", " + value_in(buffer));
}

// What the data file contains, and whether a temporary file is left beside it.
std::string stored_data() {
    serialization::labeled_text_buffer buffer;
    extras::load_data("data", buffer);
    std::string outcome = ", file: " + value_in(buffer);
    for (const ustring8& name : system::list_directory(ustring8(".")))
        if (name.find(".tova-") != ustring8::npos)
            outcome += ", and " + name;
    return outcome;
}

const char filesystem_error[] = "filesystem_error";
const char length_error[] = "length_error";

std::vector<operation> operations() {
    using i18n::message_catalogs;
    std::vector<operation> all;
    all.push_back({"load_file",
                   {"1 before", "0 \\0\\0\\0\\0\\0", filesystem_error, length_error},
                   load,
                   no_more});
    all.push_back({"store_file",
                   {"1, file: bytes", "0, file: ", std::string(filesystem_error) + ", file: bytes"},
                   [] { return number(system::store_file(ustring8("file"), ustring8("new"))); },
                   stored_file});
    all.push_back({"have_read_access",
                   {"0"},
                   [] { return number(system::have_read_access(ustring8("file"))); },
                   no_more});
    all.push_back({"create_directory",
                   {"0, no directory", "0, outer", "1, outer and inner"},
                   [] { return number(system::create_directory(ustring8("./outer/inner/"))); },
                   [] {
                       return exists("outer/inner") ? ", outer and inner"
                              : exists("outer")     ? ", outer"
                                                    : ", no directory";
                   }});
    // An entry is missing if it is not found. So are all entries after a failed read of the
    // directory.
    all.push_back({"get_directory_files",
                   {"", "folder/a.xmc "},
                   [] {
                       std::vector<ustring8> files;
                       system::get_directory_files(ustring8("folder"), files);
                       return names_of(files);
                   },
                   no_more});
    all.push_back({"list_directory",
                   {""},
                   [] { return names_of(system::list_directory(ustring8("folder"))); },
                   no_more});
    all.push_back({"io::exists, is_file, is_directory",
                   {"010", "100", "000", "110"},
                   [] {
                       const ustring8 path("file");
                       return number(system::io::exists(path)) + number(system::io::is_file(path)) +
                              number(system::io::is_directory(path));
                   },
                   no_more});
    all.push_back({"io::remove_file",
                   {"done, file: bytes"},
                   [] {
                       system::io::remove_file(ustring8("file"));
                       return "done";
                   },
                   stored_file});
    all.push_back({"io::remove_dir",
                   {"done, still there"},
                   [] {
                       system::io::remove_dir(ustring8("empty"));
                       return "done";
                   },
                   [] { return exists("empty") ? ", still there" : ", gone"; }});
    all.push_back({"io::move",
                   {"done, file: bytes"},
                   [] {
                       system::io::move(ustring8("moved"), ustring8("file"));
                       return "done";
                   },
                   stored_file});
    all.push_back({"config_manager::load", {"1 none"}, settings, no_more});
    all.push_back({"config_manager::load and save",
                   {"11, file: [s]\\na=1\\n", "11, file: "},
                   saved_settings,
                   [] { return ", file: " + shown(content_of("tool.cfg")); }});
    all.push_back({"file_item::save",
                   {"1, file: [s]\\na=1\\n", "1, file: "},
                   [] {
                       config::file_item item{ustring8("tool.cfg")};
                       item.set(ustring8("s.b = 2"), 0);
                       return number(item.save());
                   },
                   [] { return ", file: " + shown(content_of("tool.cfg")); }});
    all.push_back({"message_catalogs::load_file",
                   {"3 without", "6 without"},
                   [] {
                       message_catalogs set;
                       return outcome_of(set.load_file(ustring8("folder/a.xmc"), ustring8("en")),
                                         set);
                   },
                   no_more});
    all.push_back({"message_catalogs::load_file, an include",
                   {"3 without", "6 without"},
                   [] {
                       message_catalogs set;
                       return outcome_of(set.load_file(ustring8("outer.xmc"), ustring8("en")), set);
                   },
                   no_more});
    all.push_back({"message_catalogs::load",
                   {"1 without", "3 without", "5 without", "6 without"},
                   [] {
                       message_catalogs set;
                       return outcome_of(set.load(ustring8("folder"), ustring8("en")), set);
                   },
                   no_more});
    all.push_back({"message_catalogs::load, a list of files",
                   {"3", "5", "6", "3 first", "5 first", "6 first"},
                   list_of_files,
                   no_more});
    all.push_back({"message_catalogs::load_directory",
                   {"0 without", "3 without", "4 without", "6 without"},
                   [] {
                       message_catalogs set;
                       return outcome_of(set.load_directory(ustring8("folder"), ustring8("en")),
                                         set);
                   },
                   no_more});
    all.push_back({"xml_stream_parser",
                   {"0", "11", "11 log entry entry", filesystem_error},
                   follow,
                   no_more});
    all.push_back({"extras::load_data", {"file error, before"}, loaded_data, no_more});
    // If only the directory cannot be synced, the file has been replaced.
    all.push_back({"extras::store_data",
                   {"file error, file: old", "file error, file: new"},
                   [] { return extras::name(extras::store_data("data", data_of("new")).error); },
                   stored_data});
    return all;
}

// ---- one run

struct run_result {
    bool failed;  // whether the call was made, and failed
    bool finished;
    bool leaked;
    char outcome[4000];
};

int lowest_free_descriptor() {
    const int file = ::dup(0);
    ::close(file);
    return file;
}

std::string run_and_name(const operation& one) {
    try {
        return one.run();
    } catch (const boost::filesystem::filesystem_error&) {
        return filesystem_error;
    } catch (const std::length_error&) {
        return length_error;
    } catch (const std::exception& error) {
        return std::string("raised ") + error.what();
    }
}

// Runs in the child, in a separate directory.
void run_there(const operation& one, system_call which, int error, unsigned successes, bool slow,
               run_result& result) {
    ::alarm(20);  // ends an operation that blocks forever
    make_files();
    const int descriptor = lowest_free_descriptor();
    std::string outcome;
    if (slow) {
        const slow_transfers transfers;
        outcome = run_and_name(one);
        result.failed = true;
    } else {
        const failing_call failure(which, error, successes);
        outcome = run_and_name(one);
        result.failed = failure.failed();
    }
    result.leaked = lowest_free_descriptor() != descriptor;
    outcome += one.after();
    std::strncpy(result.outcome, outcome.c_str(), sizeof result.outcome - 1);
    result.finished = true;
}

std::string s_work;
run_result* s_result;

const run_result& run(const operation& one, system_call which, int error, unsigned successes,
                      bool slow = false) {
    *s_result = run_result();
    static unsigned count = 0;
    const std::string folder = s_work + "/" + std::to_string(count++);
    ::mkdir(folder.c_str(), 0700);
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() == parent && ::chdir(folder.c_str()) == 0)
            run_there(one, which, error, successes, slow, *s_result);
        _exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!s_result->finished)
        std::strcpy(s_result->outcome, "did not return");
    return *s_result;
}

// ---- all of them

const struct {
    const char* name;
    system_call which;
} calls[] = {{"open", system_call::open},       {"lstat", system_call::lstat},
             {"lseek", system_call::lseek},     {"read", system_call::read},
             {"write", system_call::write},     {"stat", system_call::stat},
             {"close", system_call::close},     {"opendir", system_call::opendir},
             {"readdir", system_call::readdir}, {"closedir", system_call::closedir},
             {"mkdir", system_call::mkdir},     {"rmdir", system_call::rmdir},
             {"remove", system_call::remove},   {"rename", system_call::rename}};

const struct {
    const char* name;
    int number;
} errors[] = {{"EIO", EIO}, {"ENOSPC", ENOSPC}, {"EINTR", EINTR}, {"EACCES", EACCES}};

class findings {
public:
    explicit findings(const operation& one) : m_operation(one) {
        m_undisturbed = run(one, system_call::count, 0, 0).outcome;
    }

    // Checks that the outcome of the last run is one of the documented ones.
    void check(const run_result& result, bool only_undisturbed, const std::string& how) {
        ++m_failures;
        const std::string outcome = result.outcome;
        m_outcomes.insert(outcome == m_undisturbed ? "as undisturbed" : outcome);
        bool right = outcome == m_undisturbed;
        for (const std::string& documented : m_operation.documented)
            right |= !only_undisturbed && outcome == documented;
        if (!right)
            m_wrong += how + ": " + outcome + "; ";
        if (result.leaked)
            m_wrong += how + ": a descriptor is left open; ";
    }

    // Prints a line and begins the next one. Returns whether everything was correct.
    bool print(const char* call) {
        const bool right = m_wrong.empty();
        if (m_failures != 0) {
            std::cout << m_operation.name << '\t' << call << '\t' << m_failures << '\t';
            const char* separator = "";
            for (const std::string& outcome : m_outcomes) {
                std::cout << separator << outcome;
                separator = "; ";
            }
            std::cout << '\t' << (right ? "ok" : m_wrong) << '\n';
        }
        m_failures = 0;
        m_outcomes.clear();
        m_wrong.clear();
        return right;
    }

private:
    const operation& m_operation;
    std::string m_undisturbed;
    unsigned m_failures = 0;
    std::set<std::string> m_outcomes;
    std::string m_wrong;
};

bool check_operation(const operation& one) {
    findings found(one);
    bool right = true;
    for (const auto& call : calls) {
        const bool transfers = call.which == system_call::read || call.which == system_call::write;
        for (const auto& error : errors)
            for (unsigned successes = 0;; ++successes) {
                const run_result& result = run(one, call.which, error.number, successes);
                if (!result.failed && result.finished)
                    break;
                found.check(result, transfers && error.number == EINTR,
                            std::string(error.name) + " at call " + std::to_string(successes));
                if (!result.finished)
                    break;
            }
        right &= found.print(call.name);
    }
    found.check(run(one, system_call::count, 0, 0, true), true, "one byte at a time");
    right &= found.print("short transfers");
    return right;
}

}  // namespace

// The working directory must be empty. Each run adds a directory to it.
int main() {
    char* const folder = ::getcwd(nullptr, 0);
    s_work = folder;
    std::free(folder);
    void* const shared = ::mmap(nullptr, sizeof(run_result), PROT_READ | PROT_WRITE,
                                MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED)
        return 2;
    s_result = new (shared) run_result();
    bool right = true;
    for (const operation& one : operations())
        right &= check_operation(one);
    return right ? 0 : 1;
}
