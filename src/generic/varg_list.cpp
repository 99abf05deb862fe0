// A vector of arguments in order of insertion. Names are found by a linear search: lists are as
// short as the argument lists of calls, and an index would have to track changes made through
// iterators and references, which may rename any argument.
#include <tova/generic/varg_list.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <type_traits>

namespace TOVA_2_18 {
namespace generic {

namespace {

// Contract: the message is published, so it is written out here and doesn't depend on the installed
// standard library.
void require_position(std::size_t position, std::size_t count) {
    if (position < count)
        return;
    char text[128];
    static_cast<void>(
        std::snprintf(text, sizeof text,
                      "vector::_M_range_check: __n (which is %zu) >= this->size() (which is %zu)",
                      position, count));
    throw std::out_of_range(text);
}

// Most names differ in length or in the first byte.
inline bool is_same_name(const strings::ustring8& left, const strings::ustring8& right) {
    return left.size() == right.size() && *left.data() == *right.data() &&
           std::memcmp(left.data(), right.data(), left.size()) == 0;
}

template <typename Iterator>
Iterator find_name(Iterator first, Iterator last, const strings::ustring8& name) {
    return std::find_if(first, last,
                        [&name](const argument& a) { return is_same_name(a.name(), name); });
}

bool has_name(const std::vector<argument>& arguments, const strings::ustring8& name) {
    for (const argument& present : arguments)
        if (is_same_name(present.name(), name))
            return true;
    return false;
}

// A named argument is identified only by its name.
bool is_unnamed_nil(const argument& value) {
    return !value.has_name() && value == types::nil;
}

// Reserves room for the arguments of a typical call, so that a list grows only once. Only an empty
// list is grown here, because an argument that is appended may be part of a longer list.
const std::size_t usual_count = 4;

template <typename... Values>
void append(std::vector<argument>& arguments, const Values&... values) {
    if (arguments.capacity() == 0)
        arguments.reserve(usual_count);
    arguments.emplace_back(values...);
}

}  // namespace

// Built while the library is loaded. The library itself never copies it: a copy changes the count
// of its body, and another thread may be doing the same.
argument varg_list::nil_argument(types::nil);

varg_list::varg_list() : m_arguments() {}

varg_list::varg_list(const varg_list& other) : m_arguments(other.m_arguments) {}

// Parameters that a caller omits default to `nil_argument`, so they end the list by the same rule
// as a nil that is passed. They are compared and never copied.
varg_list::varg_list(const argument& a1, const argument& a2, const argument& a3, const argument& a4,
                     const argument& a5, const argument& a6, const argument& a7, const argument& a8,
                     const argument& a9, const argument& a10, const argument& a11,
                     const argument& a12, const argument& a13, const argument& a14,
                     const argument& a15, const argument& a16, const argument& a17,
                     const argument& a18, const argument& a19, const argument& a20,
                     const argument& a21, const argument& a22, const argument& a23,
                     const argument& a24, const argument& a25, const argument& a26)
    : m_arguments() {
    const argument* const arguments[] = {&a1,  &a2,  &a3,  &a4,  &a5,  &a6,  &a7,  &a8,  &a9,
                                         &a10, &a11, &a12, &a13, &a14, &a15, &a16, &a17, &a18,
                                         &a19, &a20, &a21, &a22, &a23, &a24, &a25, &a26};
    // Contract: the first unnamed nil ends the list, whatever follows it; a named nil is stored.
    std::size_t count = 0;
    while (count != std::extent<decltype(arguments)>::value && !is_unnamed_nil(*arguments[count]))
        ++count;
    if (count == 0)
        return;
    m_arguments.reserve(std::max(count, usual_count));
    for (std::size_t i = 0; i < count; ++i) {
        const argument& each = *arguments[i];
        if (each.has_name() && has_name(m_arguments, each.name()))
            continue;
        m_arguments.push_back(each);
    }
}

// Contract: the first argument with a given name wins; a later one is rejected and never replaces
// it.
bool varg_list::push_back(const argument& value) {
    if (value.has_name() && has_argument(value.name()))
        return false;
    append(m_arguments, value);
    return true;
}

bool varg_list::push_back(const strings::ustring8& name, const types::variant& value) {
    if (!name.empty() && has_argument(name))
        return false;
    append(m_arguments, name, value);
    return true;
}

bool varg_list::has_argument(const strings::ustring8& name) const {
    return find(name) != end();
}

const argument& varg_list::at(const strings::ustring8& name) const {
    const const_iterator found = find(name);
    return found != end() ? *found : nil_argument;
}

const argument& varg_list::operator[](const strings::ustring8& name) const {
    return at(name);
}

const argument& varg_list::at(unsigned long position) const {
    require_position(position, count());
    return m_arguments[position];
}

// Contract: checked like `at`, unlike the operator of `std::vector`.
const argument& varg_list::operator[](unsigned long position) const {
    return at(position);
}

argument& varg_list::at(unsigned long position) {
    require_position(position, count());
    return m_arguments[position];
}

argument& varg_list::operator[](unsigned long position) {
    return at(position);
}

varg_list::iterator varg_list::find(const strings::ustring8& name) {
    return find_name(begin(), end(), name);
}

varg_list::const_iterator varg_list::find(const strings::ustring8& name) const {
    return find_name(begin(), end(), name);
}

varg_list::iterator varg_list::begin() {
    return m_arguments.begin();
}

varg_list::const_iterator varg_list::begin() const {
    return m_arguments.begin();
}

varg_list::iterator varg_list::end() {
    return m_arguments.end();
}

varg_list::const_iterator varg_list::end() const {
    return m_arguments.end();
}

unsigned long varg_list::count() const {
    return m_arguments.size();
}

bool varg_list::empty() const {
    return m_arguments.empty();
}

bool varg_list::equal(const types::nil_t&) const {
    return empty();
}

bool varg_list::operator==(const types::nil_t& nil_tag) const {
    return equal(nil_tag);
}

bool varg_list::operator!=(const types::nil_t& nil_tag) const {
    return !equal(nil_tag);
}

void varg_list::clear() {
    m_arguments.clear();
}

void varg_list::erase() {
    clear();
}

void varg_list::erase(const strings::ustring8& name) {
    const iterator found = find(name);
    if (found != end())
        m_arguments.erase(found);
}

void varg_list::erase(unsigned long position) {
    if (position < count())
        m_arguments.erase(begin() + static_cast<std::ptrdiff_t>(position));
}

varg_list::iterator varg_list::erase(iterator position) {
    return m_arguments.erase(position);
}

varg_list::iterator varg_list::erase(iterator first, iterator last) {
    return m_arguments.erase(first, last);
}

varg_list& varg_list::assign(const varg_list& other) {
    if (this != &other)
        m_arguments = other.m_arguments;
    return *this;
}

varg_list& varg_list::operator=(const varg_list& other) {
    return assign(other);
}

}  // namespace generic
}  // namespace TOVA_2_18
