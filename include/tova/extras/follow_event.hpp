/// @file
/// The events of a followed file. `follow.hpp` explains how they work together.
///
///     if (event.kind == tova::extras::follow_event::error)
///         std::cerr << name(event.error_code) << " in line " << event.line << '\n';
///
/// Plain values: threads may read the same event at the same time.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

#include <cstddef>
#include <utility>
#include <vector>

namespace TOVA_2_18 {
namespace extras {

/// The errors of a followed file.
enum class follow_error {
    none,                  ///< Nothing.
    not_xml,               ///< The file does not begin with a `<`.
    unsupported_encoding,  ///< The declaration names an encoding other than UTF-8 and ASCII.
    syntax_error,          ///< A byte that is not allowed at its position.
    mismatched_end_tag,    ///< An end tag that matches no open element.
    duplicate_attribute,   ///< An attribute that the element already has.
    missing_quote,         ///< An attribute value that does not begin with a quote.
    missing_equals,        ///< An attribute without a `=`.
    invalid_reference,     ///< A `&` that starts no known entity or character reference.
    too_long,              ///< A tag of more than 30000 bytes.
    data_after_root,       ///< Text or an element after the end of the root.
    incomplete,            ///< The file was rotated inside an element, tag or text in the root.
    cannot_open            ///< The file exists, but it cannot be opened or read.
};

/// The name of the enumerator, without its scope: "missing_quote". Returns "unknown" for a number
/// without a name. Never fails.
inline const char* name(follow_error error) {
    static const char* const names[] = {"none",
                                        "not_xml",
                                        "unsupported_encoding",
                                        "syntax_error",
                                        "mismatched_end_tag",
                                        "duplicate_attribute",
                                        "missing_quote",
                                        "missing_equals",
                                        "invalid_reference",
                                        "too_long",
                                        "data_after_root",
                                        "incomplete",
                                        "cannot_open"};
    const std::size_t number = static_cast<std::size_t>(error);
    return number < sizeof names / sizeof names[0] ? names[number] : "unknown";
}

/// One event of a followed file.
struct follow_event {
    /// The kinds of events.
    enum kind_type {
        start,   ///< An element begins. It has a name and attributes.
        text,    ///< Text in an element, up to the next tag, with references replaced.
        end,     ///< An element ends. It is the root if `depth` is 1.
        error,   ///< Something is wrong with the file. `error_code` says what.
        rotated  ///< The file was replaced or truncated. Later events are those of the new file.
    };

    /// The kind of the event.
    kind_type kind = start;
    /// The name of the element, or of the element around a text.
    strings::ustring8 name{};
    /// The names and values of the attributes of a start tag, in document order.
    std::vector<std::pair<strings::ustring8, strings::ustring8>> attributes{};
    /// The text. Whitespace between two tags, without other text, is no event.
    strings::ustring8 content{};
    /// The number of open elements, this one included: 1 for the root and for text in it.
    unsigned depth = 0;
    /// The line in the file, counted from 1. `start` and `end` have the line of the start tag, but
    /// the `end` of the root has the line of its end tag. A text has the line of its beginning, and
    /// an error its own.
    unsigned line = 0;
    /// The error; `none` for all other kinds of events.
    follow_error error_code = follow_error::none;

    /// The value of an attribute, or `otherwise` if the event has none of that name.
    strings::ustring8 attribute(const strings::ustring8& key,
                                const strings::ustring8& otherwise = strings::ustring8()) const {
        for (const auto& each : attributes)
            if (each.first == key)
                return each.second;
        return otherwise;
    }
};

}  // namespace extras
}  // namespace TOVA_2_18
