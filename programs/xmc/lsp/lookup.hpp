/// @file
/// Messages by their place and by their name.
#pragma once

#include "xmc/lsp/workspace.hpp"
#include "xmc/model/locale.hpp"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tova_programs::xmc::lsp {

/// A message with what it is in. The pointers are null if there is none.
struct found_message {
    document_pointer in;
    const catalog* of = nullptr;
    const message* what = nullptr;

    explicit operator bool() const { return what != nullptr; }
};

/// The message whose element has the byte at the offset.
found_message message_at(const document_pointer& in, std::size_t offset);

/// The messages of that catalog and key in all locales, ordered by locale.
std::vector<found_message> messages_of(const std::vector<document_pointer>& documents,
                                       std::string_view catalog, std::string_view key);

/// The one that translations start from: that of the reference locale, or if there is none, or if
/// `locale` is the reference itself, the first one of another locale.
found_message original_of(const std::vector<found_message>& all, const std::string& reference,
                          const std::string& locale);

}  // namespace tova_programs::xmc::lsp
