#include "xmc/lsp/uri.hpp"

#include <algorithm>
#include <cstring>

namespace tova_programs::xmc::lsp {

namespace {

int digit_of(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

bool is_plain(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           (c != '\0' && std::strchr("-._~/", c) != nullptr);
}

}  // namespace

std::string path_of(std::string_view uri) {
    const std::string_view scheme = "file:";
    if (uri.substr(0, scheme.size()) != scheme)
        return "";
    uri.remove_prefix(scheme.size());
    if (uri.substr(0, 2) == "//") {
        uri.remove_prefix(2);
        const std::string_view host = uri.substr(0, uri.find('/'));
        if (!host.empty() && host != "localhost")
            return "";
        uri.remove_prefix(host.size());
    }
    uri = uri.substr(0, uri.find_first_of("?#"));
    std::string path;
    for (std::size_t i = 0; i < uri.size(); ++i) {
        const bool is_escape = uri[i] == '%' && i + 2 < uri.size() && digit_of(uri[i + 1]) >= 0 &&
                               digit_of(uri[i + 2]) >= 0;
        if (is_escape) {
            path += static_cast<char>(16 * digit_of(uri[i + 1]) + digit_of(uri[i + 2]));
            i += 2;
        } else {
            path += uri[i];
        }
    }
    // A NUL byte would end the path early, and name another file.
    const bool is_usable = !path.empty() && path[0] == '/' && path.find('\0') == path.npos;
    return is_usable ? path : "";
}

std::string uri_of(std::string_view path) {
    static const char digits[] = "0123456789ABCDEF";
    std::string uri = "file://";
    for (const char c : path) {
        if (is_plain(c)) {
            uri += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        ((uri += '%') += digits[byte / 16]) += digits[byte % 16];
    }
    return uri;
}

}  // namespace tova_programs::xmc::lsp
