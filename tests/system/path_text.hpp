// Paths in each width, and special files, for the tests of files and directories.
#pragma once

#include <tova/strings/unicode.hpp>
#include <tova/strings/ustring.hpp>

#include <gtest/gtest.h>

#include <string>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace test_support {

template <typename Path>
Path path_text(const std::string& utf8);

template <>
inline tova::strings::ustring8 path_text(const std::string& utf8) {
    return utf8;
}
template <>
inline tova::strings::ustring16 path_text(const std::string& utf8) {
    return tova::strings::utf8_to_utf16(utf8);
}
template <>
inline tova::strings::ustring32 path_text(const std::string& utf8) {
    return tova::strings::utf8_to_utf32(utf8);
}

// Paths that are not valid: in UTF-8 they become "-1".
inline tova::strings::ustring16 bad_utf16() {
    return tova::strings::ustring16(1, static_cast<unsigned short>(0xD800));
}
inline tova::strings::ustring32 bad_utf32() {
    return tova::strings::ustring32(1, static_cast<wchar_t>(0xD800));
}

// Whether there is an entry with that name, without following links.
inline bool entry_exists(const std::string& path) {
    struct stat status;
    return ::lstat(path.c_str(), &status) == 0;
}

inline void make_link(const std::string& target, const std::string& link) {
    ASSERT_EQ(0, ::symlink(target.c_str(), link.c_str())) << link;
}

// A socket that is bound to a path, and closed at the end of its scope.
class bound_socket {
public:
    explicit bound_socket(const std::string& path) : m_socket(::socket(AF_UNIX, SOCK_STREAM, 0)) {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        EXPECT_LT(path.size(), sizeof address.sun_path);
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(0, ::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    }
    ~bound_socket() { ::close(m_socket); }
    bound_socket(const bound_socket&) = delete;
    bound_socket& operator=(const bound_socket&) = delete;

private:
    int m_socket;
};

}  // namespace test_support
