#include "support/terminal.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>

namespace tova_programs {

namespace {

struct range {
    std::uint32_t first;
    std::uint32_t last;
};

// The blocks of combining marks and of characters without a width that occur in running text.
const range no_width[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x0610, 0x061A}, {0x064B, 0x065F},
    {0x0900, 0x0902}, {0x093C, 0x093C}, {0x0941, 0x0948}, {0x094D, 0x094D}, {0x0E31, 0x0E31},
    {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E}, {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F},
    {0x202A, 0x202E}, {0x2060, 0x2064}, {0x20D0, 0x20F0}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F},
    {0xFEFF, 0xFEFF},
};

// The blocks of East Asian wide characters and of pictures.
const range double_width[] = {
    {0x1100, 0x115F}, {0x2E80, 0x303E},   {0x3041, 0x33FF},   {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},
    {0xA000, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE4F},   {0xFF00, 0xFF60},
    {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD},
};

template <std::size_t Size>
bool is_in(const range (&ranges)[Size], std::uint32_t character) {
    const auto after =
        std::upper_bound(std::begin(ranges), std::end(ranges), character,
                         [](std::uint32_t c, const range& entry) { return c < entry.first; });
    return after != std::begin(ranges) && character <= std::prev(after)->last;
}

// Moves past one character. An invalid byte counts as one character.
std::uint32_t take_character(std::string_view text, std::size_t& position) {
    const auto lead = static_cast<unsigned char>(text[position++]);
    const std::size_t following = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
    if (following == 0 || text.size() - position < following)
        return lead;
    std::uint32_t character = lead & (0x3Fu >> following);
    for (std::size_t i = 0; i < following; ++i) {
        const auto byte = static_cast<unsigned char>(text[position + i]);
        if ((byte & 0xC0) != 0x80)
            return lead;
        character = character << 6 | (byte & 0x3F);
    }
    position += following;
    return character;
}

}  // namespace

bool use_colors(color_mode mode, int descriptor) {
    if (mode != color_mode::automatic)
        return mode == color_mode::always;
    const char* const refused = std::getenv("NO_COLOR");
    if (refused != nullptr && *refused != '\0')
        return false;
    const char* const terminal = std::getenv("TERM");
    return isatty(descriptor) != 0 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

std::size_t terminal_width(int descriptor, std::size_t otherwise) {
    const char* const columns = std::getenv("COLUMNS");
    const long wanted = columns != nullptr ? std::strtol(columns, nullptr, 10) : 0;
    if (wanted > 0)
        return static_cast<std::size_t>(wanted);
    winsize size = {};
    if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col != 0)
        return size.ws_col;
    return otherwise;
}

std::size_t display_width(std::string_view text) {
    std::size_t width = 0;
    for (std::size_t position = 0; position < text.size();) {
        const std::uint32_t character = take_character(text, position);
        if (!is_in(no_width, character))
            width += is_in(double_width, character) ? 2 : 1;
    }
    return width;
}

std::string style::with(const char* code, std::string_view text) const {
    if (!m_colored)
        return std::string(text);
    return "\x1b[" + std::string(code) + 'm' + std::string(text) + "\x1b[0m";
}

}  // namespace tova_programs
