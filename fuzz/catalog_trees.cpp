// `message_catalogs` over random trees of files, compared with a plain merge: which files are read,
// in which order, which translation of a message is kept, and where an error ends the load.
//
// Input: one byte for the wanted locale, one for the form of the call, then three bytes for each
// file: its place and name, its messages, and its locale.
#include <tova/generic/varg_list.hpp>
#include <tova/i18n/message_catalogs.hpp>

#include "require.hpp"
#include "scratch_tree.hpp"
#include "support/choose_form.hpp"

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace i18n = tova::i18n;
using fuzz_support::entries_of;
using fuzz_support::require;
using fuzz_support::scratch_tree;
using tova::strings::ustring8;

const char* const locales[] = {"en", "de", "de_AT", "fr", ".", "de-AT", "", "en_GB"};

struct translation {
    std::string locale;
    std::string text;
};
// The messages of one file, in order. Each key is a letter.
struct file_content {
    bool is_valid = true;
    std::vector<std::pair<char, translation>> messages;
};
typedef std::map<std::string, file_content> contents;
typedef std::map<char, translation> merged;

std::string normalized(std::string locale) {
    if (locale.size() != 1)
        for (char& byte : locale)
            if (byte == '.' || byte == '-')
                byte = '_';
    return locale;
}

// The position in the list of wanted locales, counted from 1; 0 if the locale is not wanted.
std::size_t weight(const std::string& wanted, const std::string& locale) {
    std::vector<std::string> list = {".", "en"};
    std::string running;
    const std::string whole = normalized(wanted) + "_";
    for (std::size_t begin = 0; begin < whole.size() && wanted != "";) {
        const std::size_t end = whole.find('_', begin);
        const std::string part = whole.substr(begin, end - begin);
        running += (begin == 0 ? "" : "_") + part;
        if (running != "en" || begin != 0)
            list.push_back(running);
        begin = end + 1;
    }
    for (std::size_t i = 0; i < list.size(); ++i)
        if (list[i] == normalized(locale))
            return i + 1;
    return 0;
}

// Returns the error code that the load should report.
int plainly_loaded(const file_content& file, const std::string& wanted, bool is_named,
                   merged& set) {
    if (wanted.empty() && !is_named)
        return 2;
    if (!file.is_valid)
        return 7;
    merged read;
    for (const auto& one : file.messages) {
        const std::size_t rank = weight(wanted, one.second.locale);
        if (rank == 0)
            continue;
        const auto found = read.find(one.first);
        if (found == read.end() || weight(wanted, found->second.locale) < rank)
            read[one.first] = one.second;
    }
    for (const auto& one : read) {
        const auto found = set.find(one.first);
        if (found == set.end() ||
            weight(wanted, found->second.locale) <= weight(wanted, one.second.locale))
            set[one.first] = one.second;
    }
    return 0;
}

bool ends_with(const std::string& name, const std::string& ending) {
    return name.size() >= ending.size() &&
           name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
}

int plainly_scanned(const std::string& directory, const contents& files, const std::string& wanted,
                    bool is_named, merged& set) {
    int kind = 0;
    for (const std::string& entry : entries_of(directory)) {
        struct stat status;
        require(::stat(entry.c_str(), &status) == 0);
        if (S_ISDIR(status.st_mode))
            kind = plainly_scanned(entry, files, wanted, is_named, set);
        else if (ends_with(entry, ".xmc") || ends_with(entry, ".XML"))
            kind = plainly_loaded(files.at(entry), wanted, is_named, set);
        if (kind != 0)
            return kind;
    }
    return kind;
}

std::string bytes_of(const file_content& file) {
    std::string bytes = "<?xml version=\"1.0\"?><xmc version=\"1.0\">";
    for (const auto& one : file.messages)
        bytes += "<catalog name=\"c\" lang=\"" + one.second.locale + "\"><msg name=\"" + one.first +
                 "\">" + one.second.text + "</msg></catalog>\n";
    if (file.messages.empty())
        bytes += "<catalog name=\"c\" lang=\"none\"></catalog>";
    return bytes + (file.is_valid ? "</xmc>" : "<other/></xmc>");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    static const scratch_tree folder;
    if (size < 2 || size > 100)
        return 0;
    folder.clear();
    for (const char* name : {"a", "a/b", "c.xmc"})
        folder.make_directory(name);
    contents files;
    std::vector<std::string> paths;
    for (std::size_t i = 2; i + 2 < size; i += 3) {
        static const char* const places[] = {"", "a/", "a/b/", "c.xmc/"};
        static const char* const endings[] = {".xmc", ".XML", ".txt", ".xmc"};
        const std::string name = std::string(places[data[i] % 4]) +
                                 static_cast<char>('m' + data[i] / 4 % 6) + endings[data[i] / 64];
        file_content file;
        file.is_valid = data[i + 1] % 16 != 15;
        for (unsigned n = 0; n < data[i + 1] % 4; ++n)
            file.messages.emplace_back(
                static_cast<char>('x' + (data[i + 1] / 16 + n * (data[i + 2] & 1)) % 3),
                translation{locales[(data[i + 2] / 2 + n) % 8],
                            "text" + std::to_string(i) + "n" + std::to_string(n)});
        folder.write(name, bytes_of(file));
        if (files.count(folder.path(name)) == 0)
            paths.push_back(folder.path(name));
        files[folder.path(name)] = file;
    }

    const std::string wanted = locales[data[0] % 8];
    i18n::message_catalogs set;
    merged expected;
    int kind = 0;
    int actual = 0;
    const bool is_named = data[1] & 1;
    const auto text = [](const std::string& one) { return ustring8(one); };
    // Two loads: the second one ranks by its own locale.
    for (const std::string& locale : {wanted, std::string(locales[data[0] / 8 % 8])}) {
        if ((data[1] & 2) != 0) {
            std::vector<ustring8> list(paths.begin(), paths.end());
            actual = is_named ? set.load(list, text(locale), "c").type
                              : set.load(list, text(locale)).type;
            kind = 0;
            for (std::size_t i = 0; i < paths.size() && kind == 0; ++i)
                kind = plainly_loaded(files[paths[i]], locale, is_named, expected);
        } else {
            actual = is_named ? set.load_directory(text(folder.path()), text(locale), "c").type
                              : set.load_directory(text(folder.path()), text(locale)).type;
            kind = plainly_scanned(folder.path(), files, locale, is_named, expected);
        }
        require(actual == kind);
    }
    require(set.count("c") == expected.size());
    for (const auto& one : expected) {
        const i18n::message_t& message = set.message("c", ustring8(1, one.first));
        require(message.as_string(tova::generic::varg_list()) == one.second.text);
        require(message._orginal_locale() == one.second.locale);
    }
    return 0;
}
