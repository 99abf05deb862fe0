/// @file
/// The events of a followed file. `follow.hpp` explains them together.
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

/// What is wrong with a followed file.
enum class follow_error {
    none,                  ///< Nothing.
    not_xml,               ///< The file does not begin with a `<`.
    unsupported_encoding,  ///< The declaration names an encoding other than UTF-8 and ASCII.
    syntax_error,          ///< A byte that is not allowed where it is.
    mismatched_end_tag,    ///< An end tag that matches no open element.
    duplicate_attribute,   ///< An attribute that the element already has.
    missing_quote,         ///< An attribute value that does not begin with a quote.
    missing_equals,        ///< An attribute without a `=`.
    invalid_reference,     ///< A `&` that begins none of the five entities and no character.
    too_long,              ///< A tag of more than 30000 bytes.
    data_after_root,       ///< Text or an element after the end of the root.
    incomplete,            ///< The file was rotated within an element, tag or text in the root.
    cannot_open            ///< There is such a file, but it cannot be opened or read.
};

/// The name of the enumerator, without its scope: "missing_quote". "unknown" for a number that has
/// none. Never fails.
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
        text,    ///< Text in an element: all up to the next tag, with references replaced.
        end,     ///< An element ends; the root, if `depth` is 1.
        error,   ///< Something is wrong with the file. `error_code` says what.
        rotated  ///< The file was replaced or truncated. What follows is the new one.
    };

    /// What has happened.
    kind_type kind = start;
    /// The name of the element; for a text that of the element around it.
    strings::ustring8 name{};
    /// The names and values of the attributes of a start, in document order.
    std::vector<std::pair<strings::ustring8, strings::ustring8>> attributes{};
    /// The text. Whitespace alone between two tags makes no event.
    strings::ustring8 content{};
    /// The number of open elements, this one included: 1 for the root and for text in it.
    unsigned depth = 0;
    /// The line of the file, from 1: of the start tag, for the end of an element inside the root as
    /// well; of the end tag of the root; of the beginning of a text; of an error.
    unsigned line = 0;
    /// The error; `none` in all other events.
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
