#include "xmc/model/documents.hpp"

#include "support/text_file.hpp"
#include "xmc/model/files.hpp"
#include "xmc/model/locale.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <set>

namespace tova_programs::xmc {

namespace {

bool is_plain_file(const std::string& path) {
    struct stat status;
    return ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

void for_each_document(const std::vector<std::string>& paths,
                       const std::function<void(const document&)>& take) {
    std::vector<std::string> files = catalog_files(paths);
    std::set<std::string> known;
    for (const std::string& file : files)
        known.insert(canonical_path(file));
    for (std::size_t i = 0; i < files.size(); ++i) {
        const std::string path = files[i];
        if (!is_plain_file(path))
            continue;
        const document file(path, read_file(path));
        take(file);
        for (const include& each : file.includes()) {
            const std::string target = each.file.empty() ? "" : included_path(path, each.file);
            if (is_plain_file(target) && known.insert(canonical_path(target)).second)
                files.push_back(target);
        }
    }
}

documents read_documents(const std::vector<std::string>& paths) {
    documents result;
    for_each_document(paths, [&result](const document& file) {
        result.push_back(std::make_unique<document>(file.path(), file.bytes()));
    });
    return result;
}

std::set<std::string> locales_of(const documents& files) {
    std::set<std::string> result;
    for (const auto& file : files)
        for (const catalog& each : file->catalogs())
            if (!each.locale.empty())
                result.insert(normalized_locale(each.locale));
    return result;
}

void require_locale(const std::set<std::string>& locales, const std::string& locale) {
    if (locales.count(normalized_locale(locale)) == 0)
        throw file_error("no catalog has the locale " + locale);
}

std::vector<placed_message> all_messages(const documents& files) {
    std::vector<placed_message> result;
    for (const auto& file : files)
        for (const catalog& of : file->catalogs())
            for (const message& each : file->messages(of))
                result.push_back({file.get(), &of, &each});
    return result;
}

std::string readable_text(const document& file, const message& of) {
    std::string text;
    for (const item& each : file.items(of)) {
        if (each.is_argument && each.type != item_type::text) {
            ((text += '{') += each.text) += '}';
            continue;
        }
        for (const char c : each.text)
            text += c == '\n' ? std::string("\\n") : std::string(1, c);
    }
    return text;
}

std::string readable_key(std::string_view key) {
    const char* const digits = "0123456789abcdef";
    std::string result;
    for (const char c : key) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\n')
            result += "\\n";
        else if (c == '\t')
            result += "\\t";
        else if (c == '\r')
            result += "\\r";
        else if (byte < ' ' || byte == 0x7F)
            ((result += "\\x") += digits[byte >> 4]) += digits[byte & 15];
        else
            result += c;
    }
    return result;
}

std::string place_of(const placed_message& of) {
    const std::string& bytes = of.file->bytes();
    const auto line = 1 + std::count(bytes.begin(), bytes.begin() + of.what->bytes.begin, '\n');
    return of.file->path() + ':' + std::to_string(line);
}

}  // namespace tova_programs::xmc
