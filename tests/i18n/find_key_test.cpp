// Tests that the search agrees with the search of the map.
#include "i18n/find_key.hpp"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

using tova::i18n::detail::find_key;
using tova::strings::ustring8;
using map = std::map<ustring8, int>;

void expect_same(const map& keys, const ustring8& key) {
    const auto found = find_key(keys, key);
    ASSERT_EQ(keys.find(key), found) << key;
}

TEST(FindKey, FindsNothingInAnEmptyMap) {
    const map none;
    expect_same(none, "");
    expect_same(none, "key");
}

TEST(FindKey, TellsKeysApartThatDifferInOneByteOrInTheirLength) {
    map keys;
    std::vector<ustring8> all;
    for (std::size_t size = 0; size < 40; ++size) {
        const std::string base(size, 'k');
        all.push_back(base);
        all.push_back(base + std::string(1, '\0'));
        for (std::size_t at = 0; at < size; ++at) {
            for (const char byte : {'\0', '\x01', 'j', 'l', '\x7F', '\x80', '\xFF'}) {
                std::string changed = base;
                changed[at] = byte;
                all.push_back(changed);
            }
        }
    }
    for (std::size_t i = 0; i < all.size(); i += 2)
        keys[all[i]] = 1;
    for (const ustring8& key : all)
        expect_same(keys, key);
}

TEST(FindKey, FindsRandomKeysWithACommonBeginning) {
    std::mt19937 random(3);
    const char bytes[] = {'\0', 'a', 'b', '\xE4'};
    const auto key = [&] {
        std::string made(random() % 3 == 0 ? "" : "section_12.key_");
        for (auto i = random() % 6; i > 0; --i)
            made += bytes[random() % 4];
        return ustring8(made);
    };
    for (int round = 0; round < 200; ++round) {
        map keys;
        for (auto i = random() % 100; i > 0; --i)
            keys[key()] = 1;
        for (const auto& entry : keys)
            expect_same(keys, entry.first);
        for (int i = 0; i < 100; ++i)
            expect_same(keys, key());
    }
}

}  // namespace
