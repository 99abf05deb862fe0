#include "support/child_process.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <grp.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test_support {

namespace {

void limit(int what, rlim_t value) {
    rlimit limits = {value, value};
    if (setrlimit(static_cast<__rlimit_resource>(what), &limits) != 0)
        std::perror("setrlimit");
}

void run(const std::function<void()>& body) {
    try {
        body();
    } catch (...) {
        std::fflush(nullptr);
        _exit(99);
    }
}

void* run_on_thread(void* body) {
    run(*static_cast<const std::function<void()>*>(body));
    return nullptr;
}

void run_with_stack(const std::function<void()>& body, std::size_t bytes) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, bytes);
    pthread_t thread;
    if (pthread_create(&thread, &attributes, run_on_thread,
                       const_cast<std::function<void()>*>(&body)) != 0)
        _exit(98);
    pthread_join(thread, nullptr);
}

[[noreturn]] void leave_with_42() {
    std::fflush(nullptr);
    _exit(42);
}

const unsigned nobody = 65534;

void drop_rights() {
    if (geteuid() != 0)
        return;
    if (setgroups(0, nullptr) != 0 || setgid(nobody) != 0 || setuid(nobody) != 0) {
        std::perror("cannot become a plain user");
        _exit(97);
    }
}

// The exit code of a child whose body ran to its end without a failed check. A child that ends
// early has a different one.
const int body_passed = 11;

}  // namespace

child_result run_in_child(const std::function<void()>& body, const child_limits& limits) {
    std::fflush(nullptr);
    int ends[2];
    child_result result;
    if (pipe(ends) != 0)
        return result;
    const pid_t test = getpid();
    const pid_t child = fork();
    if (child == 0) {
        // A child that never exits on its own must not outlive a killed test.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != test)
            _exit(1);
        close(ends[0]);
        dup2(ends[1], STDOUT_FILENO);
        dup2(ends[1], STDERR_FILENO);
        close(ends[1]);
        limit(RLIMIT_CORE, 0);
        limit(RLIMIT_CPU, limits.cpu_seconds);
        if (limits.address_space_bytes != 0 && !under_sanitizer())
            limit(RLIMIT_AS, limits.address_space_bytes);
        if (limits.stack_bytes != 0)
            run_with_stack(body, limits.stack_bytes);
        else
            run(body);
        std::fflush(nullptr);
        _exit(0);
    }
    close(ends[1]);
    char buffer[4096];
    for (ssize_t got; (got = read(ends[0], buffer, sizeof buffer)) > 0;)
        result.output.append(buffer, static_cast<std::size_t>(got));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    result.exited = WIFEXITED(status);
    if (result.exited)
        result.exit_code = WEXITSTATUS(status);
    else
        result.signal = WTERMSIG(status);
    return result;
}

void expect_in_child(const std::function<void()>& body, const child_limits& limits) {
    const child_result result = run_in_child(
        [&body] {
            body();
            std::fflush(nullptr);
            _exit(::testing::Test::HasFailure() ? 1 : body_passed);
        },
        limits);
    EXPECT_EQ(body_passed, result.exit_code) << result.output;
}

void expect_as_plain_user(const std::function<void()>& body) {
    expect_in_child([&body] {
        drop_rights();
        body();
    });
}

void exit_42_on_unexpected() {
    std::set_unexpected(leave_with_42);
}

bool under_sanitizer() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    return true;
#else
    return false;
#endif
#else
    return false;
#endif
}

}  // namespace test_support
