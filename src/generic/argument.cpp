#include <tova/generic/argument.hpp>

namespace TOVA_2_18 {
namespace generic {

argument::argument() : m_name(), m_value() {}

argument::argument(const types::nil_t&) : m_name(), m_value() {}

argument::argument(const argument& other) : m_name(other.m_name), m_value(other.m_value) {}

argument::argument(const types::variant& value) : m_name(), m_value(value) {}

// The one instantiation that the library exports; other types are instantiated where they are used.
template argument::argument(const std::string& value);

argument::argument(const strings::ustring8& name, const types::variant& value)
    : m_name(name), m_value(value) {}

const strings::ustring8& argument::name() const {
    return m_name;
}

const strings::ustring8& argument::name(const strings::ustring8& value) {
    return m_name = value;
}

const types::variant& argument::value() const {
    return m_value;
}

const types::variant& argument::value(const types::variant& value) {
    return m_value = value;
}

bool argument::has_name() const {
    return !m_name.empty();
}

// Contract: a named nil is not nil. This is why it may appear in the middle of an argument list.
bool argument::equal(const types::nil_t& nil_tag) const {
    return !has_name() && m_value == nil_tag;
}

bool argument::operator==(const types::nil_t& nil_tag) const {
    return equal(nil_tag);
}

bool argument::operator!=(const types::nil_t& nil_tag) const {
    return !equal(nil_tag);
}

argument& argument::assign(const strings::ustring8& name, const types::variant& value) {
    m_name = name;
    m_value = value;
    return *this;
}

argument& argument::assign(const types::variant& value) {
    m_value = value;
    return *this;
}

argument& argument::operator=(const types::variant& value) {
    return assign(value);
}

argument& argument::assign(const argument& other) {
    return assign(other.m_name, other.m_value);
}

argument& argument::operator=(const argument& other) {
    return assign(other);
}

}  // namespace generic
}  // namespace TOVA_2_18
