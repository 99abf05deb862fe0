/// @file
/// What the author of a catalog is writing at a place: an element, an attribute or its value.
///
/// The text before the place is read by the scanner, which copes with everything that is not
/// finished; the tag at the place itself is read here.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tova_programs::xmc::lsp {

struct cursor {
    enum kind_t { elsewhere, element, end_tag, attribute_name, attribute_value };

    kind_t kind = elsewhere;
    std::size_t begin = 0;  ///< the bytes that a completion replaces
    std::size_t end = 0;

    std::vector<std::string> open;  ///< the elements around the place, the innermost last
    std::string catalog;            ///< the name and locale of the innermost catalog
    std::string locale;
    std::string key;                     ///< the name of the innermost message
    std::vector<std::string> arguments;  ///< of that message, as far as it is before the place
    std::string tag;                     ///< the element whose tag the place is in
    std::vector<std::pair<std::string, std::string>>
        attributes;             ///< of the tag, without the one here
    std::string attribute;      ///< the one whose value the place is in
    bool follows_name = false;  ///< `name` comes before the place
    bool is_finished = false;   ///< the tag has its '>', the name of an attribute its '='
    bool needs_quote = false;   ///< the value lacks its closing quote
    char quote = '"';
};

cursor cursor_at(const std::string& text, std::size_t offset);

}  // namespace tova_programs::xmc::lsp
