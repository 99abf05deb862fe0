#include "xmc/lsp/lsp.hpp"

#include "xmc/lsp/server.hpp"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <string_view>

namespace tova_programs::xmc {

namespace {

// Whether all bytes were taken.
bool write_all(int out, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(out, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// How long to wait for input: not at all while there is something to do, and a while before a
// check.
int patience(const lsp::server& one) {
    if (one.has_messages())
        return 0;
    return one.is_check_due() ? static_cast<int>(one.check_delay().count()) : -1;
}

}  // namespace

int run_lsp(const check_options& options, int in, int out) {
    static_cast<void>(
        std::signal(SIGPIPE, SIG_IGN));  // a client that is gone is the end, not a signal
    bool has_reader = true;
    lsp::server one(options, [&](const std::string& content) {
        has_reader = has_reader && write_all(out, lsp::framed(content));
    });
    std::string bytes(65536, '\0');
    bool is_open = true;
    while (has_reader && !one.has_ended()) {
        pollfd input = {in, POLLIN, 0};
        if (is_open && ::poll(&input, 1, patience(one)) > 0) {
            const ssize_t size = ::read(in, &bytes[0], bytes.size());
            is_open = size > 0 || (size < 0 && errno == EINTR);
            if (size > 0)
                one.receive(std::string_view(bytes).substr(0, static_cast<std::size_t>(size)));
            continue;
        }
        if (one.handle_next())
            continue;
        one.check_if_due();
        if (!is_open)
            break;
    }
    return one.exit_code();
}

}  // namespace tova_programs::xmc
