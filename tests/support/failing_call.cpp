#include "support/failing_call.hpp"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace {

using test_support::system_call;

system_call s_which = system_call::count;  // `count` if no call is to fail
unsigned s_successes_left = 0;
int s_error_number = 0;
bool s_failed = false;
bool s_slow = false;
bool s_interrupted = false;

// Whether this call fails, with `errno` set.
bool fails(system_call which) {
    if (which != s_which || s_failed || s_successes_left-- != 0)
        return false;
    s_failed = true;
    errno = s_error_number;
    return true;
}

bool is_interrupted() {
    if (!s_slow)
        return false;
    s_interrupted = !s_interrupted;
    if (s_interrupted)
        errno = EINTR;
    return s_interrupted;
}

std::size_t shortened(std::size_t size) {
    return s_slow && size > 1 ? 1 : size;
}

template <typename Function>
Function real(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

int open_file(const char* path, int flags, mode_t mode) {
    if (fails(system_call::open))
        return -1;
    static const auto call = real<int (*)(const char*, int, ...)>("open");
    return call(path, flags, mode);
}

int query(const char* path, void* status) {
    if (fails(system_call::lstat))
        return -1;
    static const auto call = real<int (*)(const char*, void*)>("lstat");
    return call(path, status);
}

int query_target(const char* path, void* status) {
    if (fails(system_call::stat))
        return -1;
    static const auto call = real<int (*)(const char*, void*)>("stat");
    return call(path, status);
}

// The calls that need no special handling.
template <typename... Arguments>
int change(system_call which, int (*call)(Arguments...), Arguments... arguments) {
    return fails(which) ? -1 : call(arguments...);
}

off_t seek(int file, off_t offset, int origin) {
    if (fails(system_call::lseek))
        return -1;
    static const auto call = real<off_t (*)(int, off_t, int)>("lseek");
    return call(file, offset, origin);
}

ssize_t read_at(int file, void* bytes, size_t size, off_t offset) {
    if (fails(system_call::read))
        return s_error_number == 0 ? 0 : -1;
    if (is_interrupted())
        return -1;
    static const auto call = real<ssize_t (*)(int, void*, size_t, off_t)>("pread");
    return call(file, bytes, shortened(size), offset);
}

}  // namespace

// The 64-bit forms are the same functions on 64-bit systems.
extern "C" {

int open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return open_file(path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return open_file(path, flags, mode);
}

int lstat(const char* path, struct stat* status) noexcept {
    return query(path, status);
}

int lstat64(const char* path, struct stat64* status) noexcept {
    return query(path, status);
}

off_t lseek(int file, off_t offset, int origin) noexcept {
    return seek(file, offset, origin);
}

off_t lseek64(int file, off_t offset, int origin) noexcept {
    return seek(file, offset, origin);
}

ssize_t read(int file, void* bytes, size_t size) {
    if (fails(system_call::read))
        return s_error_number == 0 ? 0 : -1;
    if (is_interrupted())
        return -1;
    static const auto call = real<ssize_t (*)(int, void*, size_t)>("read");
    return call(file, bytes, shortened(size));
}

ssize_t pread(int file, void* bytes, size_t size, off_t offset) {
    return read_at(file, bytes, size, offset);
}

ssize_t pread64(int file, void* bytes, size_t size, off_t offset) {
    return read_at(file, bytes, size, offset);
}

ssize_t write(int file, const void* bytes, size_t size) {
    if (fails(system_call::write) || is_interrupted())
        return -1;
    static const auto call = real<ssize_t (*)(int, const void*, size_t)>("write");
    return call(file, bytes, shortened(size));
}

int stat(const char* path, struct stat* status) noexcept {
    return query_target(path, status);
}

int stat64(const char* path, struct stat64* status) noexcept {
    return query_target(path, status);
}

int close(int file) {
    static const auto call = real<int (*)(int)>("close");
    const int result = call(file);
    return fails(system_call::close) ? -1 : result;
}

DIR* opendir(const char* path) {
    if (fails(system_call::opendir))
        return nullptr;
    static const auto call = real<DIR* (*)(const char*)>("opendir");
    return call(path);
}

dirent* readdir(DIR* directory) {
    if (fails(system_call::readdir))
        return nullptr;
    static const auto call = real<dirent* (*)(DIR*)>("readdir");
    return call(directory);
}

dirent64* readdir64(DIR* directory) {
    if (fails(system_call::readdir))
        return nullptr;
    static const auto call = real<dirent64* (*)(DIR*)>("readdir64");
    return call(directory);
}

int closedir(DIR* directory) {
    static const auto call = real<int (*)(DIR*)>("closedir");
    const int result = call(directory);
    return fails(system_call::closedir) ? -1 : result;
}

int mkdir(const char* path, mode_t mode) noexcept {
    return change(system_call::mkdir, real<int (*)(const char*, mode_t)>("mkdir"), path, mode);
}

int rmdir(const char* path) noexcept {
    return change(system_call::rmdir, real<int (*)(const char*)>("rmdir"), path);
}

int remove(const char* path) noexcept {
    return change(system_call::remove, real<int (*)(const char*)>("remove"), path);
}

int rename(const char* from, const char* to) noexcept {
    return change(system_call::rename, real<int (*)(const char*, const char*)>("rename"), from, to);
}

}  // extern "C"

namespace test_support {

failing_call::failing_call(system_call which, int error_number, unsigned successes) {
    s_failed = false;
    s_error_number = error_number;
    s_successes_left = successes;
    s_which = which;
}

failing_call::~failing_call() {
    s_which = system_call::count;
}

bool failing_call::failed() const {
    return s_failed;
}

slow_transfers::slow_transfers() {
    s_slow = true;
}

slow_transfers::~slow_transfers() {
    s_slow = false;
    s_interrupted = false;
}

}  // namespace test_support
