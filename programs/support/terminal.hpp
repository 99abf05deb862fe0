/// @file
/// Colors, and the width of what a terminal shows.
///
///     const style colors(use_colors(color_mode::automatic, STDOUT_FILENO));
///     std::cout << colors.red("error") << '\n';
///
/// Functions without state, apart from the environment that they read.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tova_programs {

enum class color_mode { automatic, always, never };

/// Whether output to a file descriptor is colored. In the automatic mode it is if the descriptor is
/// a terminal, TERM is not "dumb" and NO_COLOR is not set to anything but the empty string.
bool use_colors(color_mode mode, int descriptor);

/// The columns of the terminal, from COLUMNS or the descriptor; `otherwise` if there is no
/// terminal.
std::size_t terminal_width(int descriptor, std::size_t otherwise);

/// The columns that a terminal uses for UTF-8: wide characters count twice, combining ones not at
/// all, and an invalid byte once.
std::size_t display_width(std::string_view text);

/// Text in colors, or as it is.
class style {
public:
    explicit style(bool colored = false) : m_colored(colored) {}

    bool colored() const { return m_colored; }
    std::string bold(std::string_view text) const { return with("1", text); }
    std::string dim(std::string_view text) const { return with("2", text); }
    std::string red(std::string_view text) const { return with("1;31", text); }
    std::string green(std::string_view text) const { return with("32", text); }
    std::string yellow(std::string_view text) const { return with("1;33", text); }
    std::string blue(std::string_view text) const { return with("34", text); }
    std::string cyan(std::string_view text) const { return with("36", text); }

private:
    std::string with(const char* code, std::string_view text) const;

    bool m_colored;
};

}  // namespace tova_programs
