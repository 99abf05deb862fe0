// Makes allocations of the library's operations fail: `proof_allocations` runs all scenarios, each
// with its first allocation failing, then with its second one, and so on; once with one failure and
// once with all allocations failing from there on. Names as arguments select scenarios,
// `proof_allocations --once` runs all of them undisturbed, `proof_allocations --list` prints them.
//
// Each failure has one of these outcomes. Only the first two are allowed, and the third if the
// scenario says so:
//
//     raised   std::bad_alloc left the operation
//     right    the operation did not need the memory, and its result is that of an undisturbed run
//     ended    the process ended through std::unexpected
//     other    another exception left
//     wrong    no exception left, and the result differs
//     leaked   memory or a file descriptor is left over
//     crashed  the process ended in another way
//
// A scenario runs in a child process. Its counters are in memory shared with the parent. So if the
// process ends, the parent knows where, and it starts another child at the next failure.
#include "trial.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>

namespace {

// ---- the allocator

long s_may_fail = 0;  // the number of while_memory_may_fail objects
long s_seen = 0;      // allocations that could have failed
long s_failing = -1;  // the one that fails; -1 for none
bool s_all_from_there = false;
long s_live = 0;

void* allocate(std::size_t size) {
    if (s_may_fail > 0) {
        const long number = s_seen++;
        if (s_failing >= 0 && (s_all_from_there ? number >= s_failing : number == s_failing))
            throw std::bad_alloc();
    }
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr)
        throw std::bad_alloc();
    ++s_live;
    return memory;
}

void release(void* memory) {
    s_live -= memory != nullptr;
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    release(memory);
}

namespace proof {

while_memory_may_fail::while_memory_may_fail() {
    ++s_may_fail;
}

while_memory_may_fail::~while_memory_may_fail() {
    if (!(s_all_from_there && std::uncaught_exception()))
        --s_may_fail;
}

namespace {

using namespace tova;

enum outcome { raised, right, ended, other, wrong, leaked, crashed, outcomes };

const char* const outcome_names[outcomes] = {"raised", "right",  "ended",  "other",
                                             "wrong",  "leaked", "crashed"};

// Shared by the parent and its child.
struct progress {
    long step;  // 2n: the n-th allocation fails; 2n + 1: all from there on
    bool finished;
    bool unstable;  // undisturbed runs differ
    long allocations;
    long counts[outcomes];
    long first[outcomes];  // the step of the first one
};

void count(progress& state, outcome kind) {
    if (state.counts[kind]++ == 0)
        state.first[kind] = state.step;
}

int lowest_free_descriptor() {
    const int file = ::open("/dev/null", O_RDONLY);
    ::close(file);
    return file;
}

const int unexpected_code = 42;

[[noreturn]] void leave_through_unexpected() {
    _exit(unexpected_code);
}

// The result of an undisturbed run. An exception here is an error of the scenario.
std::uint64_t undisturbed(const scenario& one) noexcept {
    s_failing = -1;
    s_seen = 0;
    trial t;
    try {
        one.run(t);
    } catch (const exceptions::exception& error) {
        std::cerr << one.name << ": " << error.get_message() << '\n';
        std::abort();
    } catch (const parser::xml_parser::parse_error& error) {
        std::cerr << one.name << ": " << error.text << '\n';
        std::abort();
    }
    return t.result();
}

void run_disturbed(const scenario& one, std::uint64_t expected, progress& state) {
    const long live = s_live;
    const int descriptor = lowest_free_descriptor();
    outcome kind = right;
    s_seen = 0;
    s_failing = state.step / 2;
    s_all_from_there = state.step % 2 != 0;
    try {
        trial t;
        one.run(t);
        kind = t.result() == expected ? right : wrong;
    } catch (const std::bad_alloc&) {
        kind = raised;
    } catch (...) {
        kind = other;
    }
    s_failing = -1;
    s_may_fail = 0;
    s_all_from_there = false;
    count(state, kind);
    if (s_live != live || lowest_free_descriptor() != descriptor)
        count(state, leaked);
}

// In the child.
void run_from(const scenario& one, progress& state) {
    std::set_unexpected(leave_through_unexpected);
    const rlimit no_core = {0, 0};
    ::setrlimit(RLIMIT_CORE, &no_core);
    // The first run initializes everything that is made only once, such as the facets of a locale.
    undisturbed(one);
    const std::uint64_t expected = undisturbed(one);
    state.allocations = s_seen;
    for (; state.step < 2 * state.allocations; ++state.step) {
        run_disturbed(one, expected, state);
        if (undisturbed(one) != expected)
            state.unstable = true;
    }
    state.finished = true;
}

// Runs a scenario in children until all of its failures have been tested.
void run_all_failures(const scenario& one, progress& state) {
    while (!state.finished) {
        std::cout.flush();
        const pid_t parent = ::getpid();
        const pid_t child = ::fork();
        if (child == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (::getppid() != parent)
                _exit(1);
            ::alarm(300);
            run_from(one, state);
            _exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        if (state.finished)
            return;
        const bool by_rule = WIFEXITED(status) && WEXITSTATUS(status) == unexpected_code;
        count(state, by_rule ? ended : crashed);
        if (state.allocations == 0)
            return;  // not even undisturbed
        ++state.step;
    }
}

// A line for the script: name, whether it may end, allocations, then the outcomes.
bool report(const scenario& one) {
    void* const shared = ::mmap(nullptr, sizeof(progress), PROT_READ | PROT_WRITE,
                                MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED)
        return false;
    progress& state = *new (shared) progress();
    run_all_failures(one, state);
    bool passed = !state.unstable && (one.may_end || state.counts[ended] == 0);
    for (const outcome kind : {other, wrong, leaked, crashed})
        passed &= state.counts[kind] == 0;
    std::cout << one.name << '\t' << (one.may_end ? 1 : 0) << '\t' << state.allocations;
    for (int kind = 0; kind < outcomes; ++kind)
        std::cout << '\t' << state.counts[kind];
    std::cout << '\t' << (state.unstable ? "undisturbed runs differ; " : "");
    for (int kind = 0; kind < outcomes; ++kind)
        if (state.counts[kind] != 0 && kind >= ended)
            std::cout << outcome_names[kind] << " at " << state.first[kind] / 2
                      << (state.first[kind] % 2 != 0 ? " and on; " : "; ");
    std::cout << '\n';
    ::munmap(shared, sizeof(progress));
    return passed;
}

bool is_selected(const char* name, int count, char** words) {
    for (int i = 1; i < count; ++i)
        if (std::strcmp(words[i], name) == 0)
            return true;
    return count == 1;
}

}  // namespace

}  // namespace proof

int main(int count, char** words) {
    const proof::scenarios all = proof::all_scenarios();
    const bool list = count == 2 && std::strcmp(words[1], "--list") == 0;
    const bool once = count == 2 && std::strcmp(words[1], "--once") == 0;
    bool passed = true;
    bool found = false;
    for (const auto& one : all) {
        if (list) {
            std::cout << one.name << '\n';
        } else if (once) {
            proof::undisturbed(one);
        } else if (proof::is_selected(one.name, count, words)) {
            passed &= proof::report(one);
            found = true;
        }
    }
    if (!list && !once && !found) {
        std::cerr << "usage: proof_allocations [NAME...] | proof_allocations --once | --list\n";
        return 2;
    }
    return passed ? 0 : 1;
}
