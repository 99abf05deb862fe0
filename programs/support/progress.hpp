/// @file
/// A line on the terminal that says how far long work has come.
///
///     progress files(STDERR_FILENO, "checking", count);
///     for (...)
///         files.step();  // checking 12 of 240
///
/// Nothing is shown where the descriptor is no terminal, nor in the first half second. The line is
/// removed at the end. An object belongs to one thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace tova_programs {

class progress {
public:
    progress(int descriptor, const std::string& what, std::size_t total);
    ~progress();
    progress(const progress&) = delete;
    progress& operator=(const progress&) = delete;

    void step();

private:
    void show(const std::string& line) const;

    int m_descriptor;
    bool m_on_terminal;
    bool m_shown;
    std::string m_what;
    std::size_t m_done;
    std::size_t m_total;
    std::chrono::steady_clock::time_point m_next;
};

}  // namespace tova_programs
