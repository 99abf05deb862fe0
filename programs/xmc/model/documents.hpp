/// @file
/// All files of a set of catalogs, one after the other or together.
#pragma once

#include "xmc/model/document.hpp"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tova_programs::xmc {

/// Reads each file and each included file once and passes it on. Symbolic links and
/// included files that cannot be read are left out; `check` reports them.
void for_each_document(const std::vector<std::string>& paths,
                       const std::function<void(const document&)>& take);

using documents = std::vector<std::unique_ptr<document>>;

documents read_documents(const std::vector<std::string>& paths);

/// A message with its file and its catalog.
struct placed_message {
    const document* file;
    const catalog* of;
    const message* what;
};

/// The locales of the catalogs, as the loader compares them.
std::set<std::string> locales_of(const documents& files);

/// Raises `file_error` if the locale is not one of them.
void require_locale(const std::set<std::string>& locales, const std::string& locale);

/// All messages in the order of the files.
std::vector<placed_message> all_messages(const documents& files);

/// The text with `{name}` for each argument and its line ends as `\n`, for people to read.
std::string readable_text(const document& file, const message& of);

/// A key in one line, for people to read: control characters are escaped as in C, `\n` or `\x01`.
std::string readable_key(std::string_view key);

/// `file:line` of a message.
std::string place_of(const placed_message& of);

}  // namespace tova_programs::xmc
