// Arguments and their list, declared without the headers of the library. README.md says what this
// is for.
#pragma once

#include "abi/foreign/nil.hpp"
#include "abi/foreign/strings.hpp"
#include "abi/foreign/variant.hpp"

#include <vector>

namespace TOVA_2_18 {

namespace generic {

class argument {
public:
    argument();
    argument(const argument&);
    argument(const types::variant&);
    argument(const types::nil_t&);
    argument(const strings::ustring8& name, const types::variant& value);
    // Without bodies: a program uses the instantiations that the library exports.
    template <typename T>
    argument(const T&);
    const strings::ustring8& name() const;
    const strings::ustring8& name(const strings::ustring8&);
    const types::variant& value() const;
    const types::variant& value(const types::variant&);
    bool has_name() const;
    bool equal(const types::nil_t&) const;
    bool operator==(const types::nil_t&) const;
    bool operator!=(const types::nil_t&) const;
    argument& assign(const strings::ustring8&, const types::variant&);
    argument& assign(const types::variant&);
    argument& operator=(const types::variant&);
    argument& assign(const argument&);
    argument& operator=(const argument&);

    strings::ustring8 m_name;
    types::variant m_value;
};

class varg_list {
public:
    typedef std::vector<argument>::iterator iterator;
    typedef std::vector<argument>::const_iterator const_iterator;

    static argument nil_argument;

    varg_list();
    varg_list(const varg_list&);
    varg_list(const argument& a1, const argument& a2 = nil_argument,
              const argument& a3 = nil_argument, const argument& a4 = nil_argument,
              const argument& a5 = nil_argument, const argument& a6 = nil_argument,
              const argument& a7 = nil_argument, const argument& a8 = nil_argument,
              const argument& a9 = nil_argument, const argument& a10 = nil_argument,
              const argument& a11 = nil_argument, const argument& a12 = nil_argument,
              const argument& a13 = nil_argument, const argument& a14 = nil_argument,
              const argument& a15 = nil_argument, const argument& a16 = nil_argument,
              const argument& a17 = nil_argument, const argument& a18 = nil_argument,
              const argument& a19 = nil_argument, const argument& a20 = nil_argument,
              const argument& a21 = nil_argument, const argument& a22 = nil_argument,
              const argument& a23 = nil_argument, const argument& a24 = nil_argument,
              const argument& a25 = nil_argument, const argument& a26 = nil_argument);
    bool push_back(const argument&);
    bool push_back(const strings::ustring8& name, const types::variant& value);
    bool has_argument(const strings::ustring8&) const;
    const argument& at(const strings::ustring8&) const;
    const argument& operator[](const strings::ustring8&) const;
    const argument& at(unsigned long) const;
    const argument& operator[](unsigned long) const;
    argument& at(unsigned long);
    argument& operator[](unsigned long);
    iterator find(const strings::ustring8&);
    const_iterator find(const strings::ustring8&) const;
    iterator begin();
    const_iterator begin() const;
    iterator end();
    const_iterator end() const;
    unsigned long count() const;
    bool empty() const;
    bool equal(const types::nil_t&) const;
    bool operator==(const types::nil_t&) const;
    bool operator!=(const types::nil_t&) const;
    void clear();
    void erase();
    void erase(const strings::ustring8&);
    void erase(unsigned long);
    void erase(iterator);
    void erase(iterator, iterator);
    varg_list& assign(const varg_list&);
    varg_list& operator=(const varg_list&);

    std::vector<argument> arguments;
};

}  // namespace generic

}  // namespace TOVA_2_18
