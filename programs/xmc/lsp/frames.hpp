/// @file
/// Frames of the language server protocol: a header with the length of the content, then the
/// content.
///
///     Content-Length: 2\r\n
///     \r\n
///     {}
///
/// The reader takes bytes as they arrive, in pieces of any size. It gets over anything that is no
/// frame: it reports one error and goes on at the next header. An object belongs to one thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tova_programs::xmc::lsp {

/// A frame's content, or what is wrong with the bytes that should be a frame.
struct frame {
    bool is_error = false;
    std::string text;
};

/// The longest content that is accepted, in bytes.
constexpr std::size_t longest_content = std::size_t{1} << 28;

class frame_reader {
public:
    void add(std::string_view bytes) { m_bytes += bytes; }

    /// Takes the next frame or error. Returns false if it needs more bytes.
    bool next(frame& result);

private:
    bool take_line(frame& error);
    bool find_header();
    std::string read_header(std::string_view line);
    void forget_taken();

    enum class state { header, content, lost };

    std::string m_bytes;
    std::size_t m_at = 0;  // what is before it was taken
    state m_state = state::header;
    bool m_has_length = false;
    std::size_t m_length = 0;
};

/// The content as a frame.
std::string framed(std::string_view content);

}  // namespace tova_programs::xmc::lsp
