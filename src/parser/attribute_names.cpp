#include "parser/attribute_names.hpp"

#include "parser/equal_bytes.hpp"

namespace TOVA_2_18 {
namespace parser {
namespace detail {

using strings::ustring8;

const std::size_t attribute_names::capacity;

bool attribute_names::has(const char* bytes, std::size_t used, const char* name, std::size_t size) {
    for (std::size_t i = sizeof(header); i < used;) {
        entry_size present;
        std::memcpy(&present, bytes + i, sizeof present);
        i += sizeof present;
        if (present == size && have_equal_bytes(bytes + i, name, size))
            return true;
        i += present;
    }
    return false;
}

// An empty set gets one element for all names.
bool attribute_names::insert_into_set(const char* name, std::size_t size) {
    if (!m_names.empty() || size > capacity - sizeof(header) - sizeof(entry_size))
        return m_names.insert(ustring8(name, size)).second;
    m_names.insert(ustring8(capacity, '\0'));
    write(all(), header());
    return insert(name, size, size);
}

void attribute_names::separate() {
    if (!has_all_in_one())
        return;
    std::set<ustring8> names;
    header now;
    std::memcpy(&now, all(), sizeof now);
    for (std::size_t i = sizeof now; i < now.used;) {
        entry_size size;
        std::memcpy(&size, all() + i, sizeof size);
        i += sizeof size;
        names.insert(ustring8(all() + i, size));
        i += size;
    }
    m_names.swap(names);
}

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
