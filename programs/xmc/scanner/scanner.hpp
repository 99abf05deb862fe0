/// @file
/// Splits the bytes of an XMC file into tokens, as the library's loader does, and keeps their
/// places.
///
///     const scan tokens(bytes);      // accepts exactly what the loader accepts
///     if (tokens.error().kind != xml_error::none)
///         for (const xml_problem& each : tokens.problems()) ...
///
/// A scan has one of two outcomes. If the XML is well-formed, its tokens are those of the loader.
/// If it isn't, `error()` is the loader's error, and a second, more tolerant reading guesses what
/// was meant and continues after an error. It finds the other errors as well, and names the element
/// that is not closed instead of the line where the loader notices it.
///
/// A scan is constant once it is made, so threads may share it.
#pragma once

#include "xmc/scanner/token.hpp"

#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace tova_programs::xmc {

/// A character reference whose value may surprise.
struct odd_reference {
    enum kind_t { above_127, octal };
    kind_t kind;
    span bytes;
    unsigned char value;
};

class scan {
public:
    /// The bytes must outlive the scan and be followed by a NUL byte, which the loader appends and
    /// reads as part of the text. They are at most 4 GB.
    explicit scan(const std::string& bytes);
    scan(const scan&) = delete;
    scan& operator=(const scan&) = delete;

    const std::vector<token>& tokens() const { return m_tokens; }
    const xml_problem& error() const { return m_error; }
    const std::vector<xml_problem>& problems() const { return m_problems; }
    const std::vector<odd_reference>& odd_references() const { return m_odd_references; }

    /// Keeps a string as long as the scan.
    std::string_view keep(std::string text) {
        m_strings.push_back(std::move(text));
        return m_strings.back();
    }

private:
    friend class scanner;

    std::vector<token> m_tokens;
    std::deque<std::string> m_strings;
    xml_problem m_error;
    std::vector<xml_problem> m_problems;
    std::vector<odd_reference> m_odd_references;
};

}  // namespace tova_programs::xmc
