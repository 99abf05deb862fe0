#include <tova/strings/ustring.hpp>

#include <cstring>

namespace TOVA_2_18 {
namespace strings {

namespace {

// One allocation for both operands; a copy and an append would need two.
ustring8 join(const char* left, std::size_t left_size, const char* right, std::size_t right_size) {
    ustring8 result;
    result.reserve(left_size + right_size);
    result.append(left, left_size).append(right, right_size);
    return result;
}

}  // namespace

// Out of line, unlike the other constructors: its symbol is part of the interface.
ustring8::ustring8(const char* text) : base_type(_private::require_text(text)) {}

// Compares sizes first: most unequal strings have different sizes.
bool operator==(const ustring8& left, const ustring8& right) {
    return left.size() == right.size() && left.compare(right) == 0;
}

bool operator!=(const ustring8& left, const ustring8& right) {
    return !(left == right);
}

ustring8 operator+(const ustring8& left, const ustring8& right) {
    return join(left.data(), left.size(), right.data(), right.size());
}

ustring8 operator+(const char* left, const ustring8& right) {
    return join(left, std::strlen(_private::require_text(left)), right.data(), right.size());
}

ustring8 operator+(const ustring8& left, const char* right) {
    return join(left.data(), left.size(), right, std::strlen(_private::require_text(right)));
}

}  // namespace strings
}  // namespace TOVA_2_18
