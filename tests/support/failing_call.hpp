// Makes a chosen system call of the program fail, including calls in the library and its
// dependencies. A test program that uses this header links tova_failing_call, which replaces the
// calls.
#pragma once

namespace test_support {

// The calls that the library makes, directly or through its dependencies. `read` includes `pread`.
// A failing `close` or `closedir` still releases the file, as on Linux.
enum class system_call {
    open,
    lstat,
    lseek,
    read,
    write,
    stat,
    close,
    opendir,
    readdir,
    closedir,
    mkdir,
    rmdir,
    remove,
    rename,
    count
};

// While an object of this class exists, one call fails with the given error number: the first one
// after `successes` others of its kind. With the number 0, a read finds the end of the file
// instead.
class failing_call {
public:
    failing_call(system_call which, int error_number, unsigned successes = 0);
    ~failing_call();
    failing_call(const failing_call&) = delete;
    failing_call& operator=(const failing_call&) = delete;

    // Whether that call was made, and failed.
    bool failed() const;
};

// While an object of this class exists, each `read` and `write` transfers at most one byte, and
// every second call is interrupted by a signal.
class slow_transfers {
public:
    slow_transfers();
    ~slow_transfers();
    slow_transfers(const slow_transfers&) = delete;
    slow_transfers& operator=(const slow_transfers&) = delete;
};

}  // namespace test_support
