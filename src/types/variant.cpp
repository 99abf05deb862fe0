#include <tova/types/variant.hpp>

#include <tova/types/variant_value.hpp>

#include <ostream>
#include <type_traits>
#include <utility>

namespace TOVA_2_18 {
namespace types {

namespace {

// Creates a body for a handle to hold. If copying the value fails, the language frees the memory of
// the body, so nothing leaks.
template <typename T>
variant_type* make_body(T&& value) {
    using body_type = variant_value_t<typename std::decay<T>::type>;
    variant_type* const body = new body_type(std::forward<T>(value));
    body->allocated = true;
    return body;
}

// The standard comparison of `std::type_info`, so a body created in another module matches, too. If
// the first bytes differ, the names differ, and no call is needed.
inline bool is_nil_type(const std::type_info& type) {
    return *type.name() == *typeid(nil_t).name() && type == typeid(nil_t);
}

// The same without a virtual call. The constructors below make all bodies, so the class of a body
// tells its type.
inline bool is_nil_body(const variant_type& body) {
    return &typeid(body) == &typeid(variant_value_t<nil_t>);
}

}  // namespace

// Contract: each nil handle has its own body; no global body is shared.
variant::variant() : m_body(make_body(nil_t())) {}

variant::variant(nil_t&) : m_body(make_body(nil_t())) {}

// A body for each of the other seventeen types; a pointer gets the body of the string that it
// points to.
variant::variant(const signed char& value) : m_body(make_body(value)) {}

variant::variant(const short& value) : m_body(make_body(value)) {}

variant::variant(const int& value) : m_body(make_body(value)) {}

variant::variant(const long& value) : m_body(make_body(value)) {}

variant::variant(const unsigned char& value) : m_body(make_body(value)) {}

variant::variant(const unsigned short& value) : m_body(make_body(value)) {}

variant::variant(const unsigned int& value) : m_body(make_body(value)) {}

variant::variant(const unsigned long& value) : m_body(make_body(value)) {}

variant::variant(bool value) : m_body(make_body(value)) {}

variant::variant(const float& value) : m_body(make_body(value)) {}

variant::variant(const double& value) : m_body(make_body(value)) {}

variant::variant(const long double& value) : m_body(make_body(value)) {}

variant::variant(const char* text) : m_body(make_body(strings::ustring8(text))) {}

variant::variant(const unsigned short* text) : m_body(make_body(strings::ustring16(text))) {}

variant::variant(const wchar_t* text) : m_body(make_body(strings::ustring32(text))) {}

variant::variant(const strings::ustring8& text) : m_body(make_body(text)) {}

variant::variant(const strings::ustring16& text) : m_body(make_body(text)) {}

variant::variant(const strings::ustring32& text) : m_body(make_body(text)) {}

variant::variant(const std::string& text) : m_body(make_body(text)) {}

variant::variant(const std::wstring& text) : m_body(make_body(text)) {}

variant::variant(const variant& other) : m_body(other.m_body) {}

variant::~variant() TOVA_NOTHROW {}

variant& variant::assign(const variant& other) {
    if (this != &other)
        m_body = other.m_body;
    return *this;
}

variant& variant::operator=(const variant& other) {
    return assign(other);
}

// The new body is allocated before the old one is released: a failure leaves the handle unchanged.
variant& variant::operator=(const nil_t&) {
    m_body = make_body(nil_t());
    return *this;
}

bool variant::equal(const nil_t&) const TOVA_NOTHROW {
    return is_nil_type(type());
}

bool variant::operator==(const nil_t& nil_tag) const TOVA_NOTHROW {
    return equal(nil_tag);
}

bool variant::operator!=(const nil_t& nil_tag) const TOVA_NOTHROW {
    return !equal(nil_tag);
}

const std::type_info& variant::type() const {
    return m_body->type();
}

// The conversions forward to the slot with the same name.
bool variant::as_bool() const {
    return m_body->as_bool();
}

float variant::as_float() const {
    return m_body->as_float();
}

double variant::as_double() const {
    return m_body->as_double();
}

long double variant::as_long_double() const {
    return m_body->as_long_double();
}

short variant::as_short() const {
    return m_body->as_short();
}

int variant::as_int() const {
    return m_body->as_int();
}

long variant::as_long() const {
    return m_body->as_long();
}

signed char variant::as_int8() const {
    return m_body->as_int8();
}

short variant::as_int16() const {
    return m_body->as_int16();
}

int variant::as_int32() const {
    return m_body->as_int32();
}

long variant::as_int64() const {
    return m_body->as_int64();
}

unsigned char variant::as_uint8() const {
    return m_body->as_uint8();
}

unsigned short variant::as_uint16() const {
    return m_body->as_uint16();
}

unsigned int variant::as_uint32() const {
    return m_body->as_uint32();
}

unsigned long variant::as_uint64() const {
    return m_body->as_uint64();
}

// Contract: these five use the signed conversion of their width, although an unsigned one exists.
// The string "4294967295" is 2147483647 here.
int variant::as_signed() const {
    return m_body->as_int();
}

unsigned int variant::as_unsigned() const {
    return static_cast<unsigned int>(m_body->as_int());
}

unsigned int variant::as_uint() const {
    return static_cast<unsigned int>(m_body->as_int());
}

unsigned long variant::as_ulong() const {
    return static_cast<unsigned long>(m_body->as_long());
}

unsigned short variant::as_ushort() const {
    return static_cast<unsigned short>(m_body->as_short());
}

// Contract: a nil handle converts to an empty string, while its body converts to "0".
strings::ustring8 variant::as_string() const {
    return is_nil_body(*m_body) ? strings::ustring8() : m_body->as_string();
}

std::wstring variant::as_wstring() const {
    return is_nil_body(*m_body) ? std::wstring() : m_body->as_wstring();
}

std::string variant::as_ustring() const {
    return is_nil_body(*m_body) ? std::string() : m_body->as_ustring();
}

strings::ustring8 variant::as_utf8() const {
    return is_nil_body(*m_body) ? strings::ustring8() : m_body->as_utf8();
}

strings::ustring16 variant::as_utf16() const {
    return is_nil_body(*m_body) ? strings::ustring16() : m_body->as_utf16();
}

strings::ustring32 variant::as_utf32() const {
    return is_nil_body(*m_body) ? strings::ustring32() : m_body->as_utf32();
}

// No test for nil here: a nil body is printed as 0.
std::ostream& operator<<(std::ostream& stream, const variant& value) {
    return value.m_body->ostream(stream);
}

}  // namespace types
}  // namespace TOVA_2_18
