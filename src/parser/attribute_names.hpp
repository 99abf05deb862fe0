/// @file
/// The names of the attributes of one tag, in a set that usually needs no node for a name.
///
///     attribute_names names(set);
///     names.clear();
///     names.insert(begin, size, end - begin);  // true
///     names.insert(begin, size, end - begin);  // false
///
/// The set is a field of `xml_parser`, whose layout is part of the binary interface. Between runs
/// it has an element for each name. During a run it is in one of three states:
///
///     empty                        no names
///     one element that begins      all names side by side, each after its size; the element stays
///     with a NUL byte              for the next tag
///     other elements               the names, because they are too many for that, or because an
///                                  earlier run left them
///
/// The set always contains everything, so a handler may parse with the same parser. An object
/// belongs to one thread.
#pragma once

#include <tova/strings/ustring.hpp>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <set>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

class attribute_names {
public:
    explicit attribute_names(std::set<strings::ustring8>& names) : m_names(names) {}

    void clear() {
        if (has_all_in_one())
            write(all(), header());
        else if (!m_names.empty())
            m_names.clear();
    }

    /// Stores each name in a separate element.
    void separate();

    /// Returns false if the name is already there. `readable` bytes may be read at `name`, at least
    /// `size`.
    bool insert(const char* name, std::size_t size, std::size_t readable) {
        if (!has_all_in_one())
            return insert_into_set(name, size);
        char* const bytes = all();
        header now;
        std::memcpy(&now, bytes, sizeof now);
        // One of 64 bits shows that most names are new, without a comparison.
        const std::uint64_t bit = std::uint64_t{1}
                                  << ((static_cast<unsigned char>(name[0]) +
                                       8u * static_cast<unsigned char>(name[size - 1]) + size) %
                                      64);
        if ((now.present & bit) != 0 && has(bytes, now.used, name, size))
            return false;
        // Copies chunks of a size that the compiler knows.
        const std::size_t chunk = 16;
        if (now.used + sizeof(entry_size) + chunk > capacity || size > chunk || readable < chunk) {
            if (now.used + sizeof(entry_size) + size > capacity) {
                separate();
                return insert_into_set(name, size);
            }
            std::memcpy(bytes + now.used + sizeof(entry_size), name, size);
        } else {
            std::memcpy(bytes + now.used + sizeof(entry_size), name, chunk);
        }
        const auto added = static_cast<entry_size>(size);
        std::memcpy(bytes + now.used, &added, sizeof added);
        now.used += static_cast<std::uint32_t>(sizeof added + size);
        now.present |= bit;
        write(bytes, now);
        return true;
    }

private:
    using entry_size = std::uint16_t;

    // Precedes the names in the one element.
    struct header {
        header() : mark(0), used(sizeof(header)), present(0) {}
        std::uint32_t mark;     // begins with a NUL byte, unlike any name
        std::uint32_t used;     // bytes, including this header
        std::uint64_t present;  // a bit for each name
    };

    static const std::size_t capacity = 512;  // bytes

    bool has_all_in_one() const { return m_names.size() == 1 && (*m_names.begin())[0] == '\0'; }

    // The one element. Changing its contents is safe because the set has no other element.
    char* all() { return &const_cast<strings::ustring8&>(*m_names.begin())[0]; }

    static void write(char* bytes, const header& now) { std::memcpy(bytes, &now, sizeof now); }

    static bool has(const char* bytes, std::size_t used, const char* name, std::size_t size);
    bool insert_into_set(const char* name, std::size_t size);

    std::set<strings::ustring8>& m_names;
};

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
