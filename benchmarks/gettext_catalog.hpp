/// @file
/// Catalogs in gettext's binary form, for the benchmarks that have gettext as a peer.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace bench_support {

/// The bytes of a catalog, as msgfmt writes them: a header of seven words, two tables of lengths
/// and offsets, a hash table, the keys in order and their texts.
inline std::string gettext_catalog(const std::map<std::string, std::string>& texts) {
    const auto count = static_cast<std::uint32_t>(texts.size());
    const auto is_prime = [](std::uint32_t n) {
        for (std::uint32_t d = 3; d * d <= n; d += 2)
            if (n % d == 0)
                return false;
        return true;
    };
    std::uint32_t slots = count * 4 / 3 | 1;
    while (slots < 3 || !is_prime(slots))
        slots += 2;
    const std::uint32_t keys_at = 28;
    const std::uint32_t texts_at = keys_at + 8 * count;
    const std::uint32_t hash_at = texts_at + 8 * count;
    const std::uint32_t strings_at = hash_at + 4 * slots;

    std::vector<std::uint32_t> words = {0x950412de, 0, count, keys_at, texts_at, slots, hash_at};
    std::string strings;
    const auto add = [&](const std::string& string) {
        words.push_back(static_cast<std::uint32_t>(string.size()));
        words.push_back(strings_at + static_cast<std::uint32_t>(strings.size()));
        strings.append(string.c_str(), string.size() + 1);
    };
    std::vector<std::uint32_t> hash(slots);
    std::uint32_t number = 0;
    for (const auto& entry : texts) {
        add(entry.first);
        std::uint32_t value = 0;
        for (const char c : entry.first) {
            value = (value << 4) + static_cast<unsigned char>(c);
            const std::uint32_t top = value & 0xf0000000u;
            if (top != 0)
                value = (value ^ (top >> 24)) ^ top;
        }
        std::uint32_t slot = value % slots;
        while (hash[slot] != 0)
            slot = (slot + 1 + value % (slots - 2)) % slots;
        hash[slot] = ++number;
    }
    for (const auto& entry : texts)
        add(entry.second);
    words.insert(words.end(), hash.begin(), hash.end());
    return std::string(reinterpret_cast<const char*>(words.data()), 4 * words.size()) + strings;
}

/// Makes the folders in which gettext looks for the catalogs of a language below `root`, and
/// returns the path of one domain's catalog there.
inline std::string make_gettext_folders(const std::string& root, const std::string& language,
                                        const std::string& domain) {
    const std::string folder = root + "/" + language;
    ::mkdir(root.c_str(), 0700);
    ::mkdir(folder.c_str(), 0700);
    ::mkdir((folder + "/LC_MESSAGES").c_str(), 0700);
    return folder + "/LC_MESSAGES/" + domain + ".mo";
}

}  // namespace bench_support
