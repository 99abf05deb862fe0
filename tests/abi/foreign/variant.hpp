// The variant, declared without the headers of the library. README.md says what this is for.
#pragma once

#include "abi/foreign/abilities.hpp"
#include "abi/foreign/nil.hpp"
#include "abi/foreign/pointers.hpp"
#include "abi/foreign/strings.hpp"

#include <iosfwd>
#include <string>
#include <typeinfo>

namespace TOVA_2_18 {

namespace types {

class variant_type : public generic::abilities::reference_count_pointer_ability<variant_type>,
                     public generic::abilities::clone_ability {
public:
    ~variant_type() throw() override;
    virtual bool convertible() const throw() = 0;
    virtual const std::type_info& type() const throw() = 0;
    virtual variant_type* clone() throw() = 0;
    virtual std::ostream& ostream(std::ostream&) const throw() = 0;
    virtual int as_int() const throw() = 0;
    virtual short as_short() const throw() = 0;
    virtual long as_long() const throw() = 0;
    virtual signed char as_int8() const throw() = 0;
    virtual short as_int16() const throw() = 0;
    virtual int as_int32() const throw() = 0;
    virtual long as_int64() const throw() = 0;
    virtual unsigned char as_uint8() const throw() = 0;
    virtual unsigned short as_uint16() const throw() = 0;
    virtual unsigned int as_uint32() const throw() = 0;
    virtual unsigned long as_uint64() const throw() = 0;
    virtual bool as_bool() const throw() = 0;
    virtual strings::ustring8 as_string() const throw() = 0;
    virtual std::wstring as_wstring() const throw() = 0;
    virtual std::string as_ustring() const throw() = 0;
    virtual strings::ustring8 as_utf8() const throw() = 0;
    virtual strings::ustring16 as_utf16() const throw() = 0;
    virtual strings::ustring32 as_utf32() const throw() = 0;
    virtual float as_float() const throw() = 0;
    virtual double as_double() const throw() = 0;
    virtual long double as_long_double() const throw() = 0;
};

class variant {
public:
    variant();
    variant(nil_t&);
    variant(const signed char&);
    variant(const short&);
    variant(const int&);
    variant(const long&);
    variant(const unsigned char&);
    variant(const unsigned short&);
    variant(const unsigned int&);
    variant(const unsigned long&);
    variant(bool);
    variant(const float&);
    variant(const double&);
    variant(const long double&);
    variant(const char*);
    variant(const unsigned short*);
    variant(const wchar_t*);
    variant(const strings::ustring8&);
    variant(const strings::ustring16&);
    variant(const strings::ustring32&);
    variant(const std::string&);
    variant(const std::wstring&);
    variant(const variant&);
    ~variant() throw();
    variant& assign(const variant&);
    variant& operator=(const variant&);
    variant& operator=(const nil_t&);
    bool equal(const nil_t&) const throw();
    bool operator==(const nil_t&) const throw();
    bool operator!=(const nil_t&) const throw();
    const std::type_info& type() const;
    bool as_bool() const;
    float as_float() const;
    double as_double() const;
    long double as_long_double() const;
    short as_short() const;
    int as_int() const;
    long as_long() const;
    signed char as_int8() const;
    short as_int16() const;
    int as_int32() const;
    long as_int64() const;
    unsigned char as_uint8() const;
    unsigned short as_uint16() const;
    unsigned int as_uint32() const;
    unsigned long as_uint64() const;
    int as_signed() const;
    unsigned int as_unsigned() const;
    unsigned int as_uint() const;
    unsigned long as_ulong() const;
    unsigned short as_ushort() const;
    strings::ustring8 as_string() const;
    std::wstring as_wstring() const;
    std::string as_ustring() const;
    strings::ustring8 as_utf8() const;
    strings::ustring16 as_utf16() const;
    strings::ustring32 as_utf32() const;

    memory::pointers::rc_pointer<variant_type> body;
};

std::ostream& operator<<(std::ostream&, const variant&);

}  // namespace types

}  // namespace TOVA_2_18
