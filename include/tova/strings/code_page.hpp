/// Conversion between Unicode strings and 8-bit text in one of the known code pages.
#pragma once

#include <string>

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/nil.hpp>

namespace TOVA_2_18 {
namespace strings {

/// A code page, named by its number, that text can be converted to and from.
///
/// A plain value. Each conversion opens and closes its own iconv descriptor and asks for the
/// locale's character set anew; nothing is cached, and threads may share an object.
///
/// Characters that cannot be converted are no failure: they come out as "?", one for each byte
/// skipped. A text that ends in the middle of a character ends in front of it; if the output was
/// just full there, two NUL bytes stand in its place.
class TOVA_API code_page {
public:
    /// The known code pages. The numbers are part of the interface.
    enum encoding_type : int {
        encoding_default = 0,   ///< No code page; not convertible.
        encoding_ansi = 1,      ///< The character set of the process's current locale.
        encoding_locale_2 = 2,  ///< As `encoding_ansi`.
        encoding_locale_3 = 3,  ///< As `encoding_ansi`.
        encoding_utf8 = 4,
        encoding_932 = 932,        ///< Japanese, "WINDOWS-31J".
        encoding_936 = 936,        ///< Simplified Chinese, "GBK".
        encoding_949 = 949,        ///< Korean, "CP949".
        encoding_950 = 950,        ///< Traditional Chinese, "BIG5".
        encoding_1250 = 1250,      ///< Central European, "CP1250".
        encoding_1251 = 1251,      ///< Cyrillic, "CP1251".
        encoding_1252 = 1252,      ///< Western European, "CP1252".
        encoding_1253 = 1253,      ///< Greek, "CP1253".
        encoding_1254 = 1254,      ///< Turkish, "CP1254".
        encoding_1255 = 1255,      ///< Hebrew, "CP1255".
        encoding_1256 = 1256,      ///< Arabic, "CP1256".
        encoding_1257 = 1257,      ///< Baltic, "CP1257".
        encoding_1258 = 1258,      ///< Vietnamese, "CP1258".
        encoding_20866 = 20866,    ///< Russian, "KOI8-R".
        encoding_21866 = 21866,    ///< Ukrainian, "KOI8-U".
        encoding_28591 = 28591,    ///< "ISO-8859-1".
        encoding_28592 = 28592,    ///< "ISO-8859-2".
        encoding_28593 = 28593,    ///< "ISO-8859-3".
        encoding_28594 = 28594,    ///< "ISO-8859-4".
        encoding_28595 = 28595,    ///< "ISO-8859-5".
        encoding_28596 = 28596,    ///< "ISO-8859-6".
        encoding_28597 = 28597,    ///< "ISO-8859-7".
        encoding_28598 = 28598,    ///< "ISO-8859-8".
        encoding_28599 = 28599,    ///< "ISO-8859-9". The numbers up to 28604 are not known.
        encoding_28605 = 28605,    ///< "ISO-8859-15".
        encoding_125100 = 125100,  ///< Seven-bit ASCII, "ANSI_X3.4-1968".
    };

    /// `encoding_default`, which no conversion accepts.
    code_page();
    code_page(const types::nil_t&);
    code_page(const encoding_type& value);
    code_page(const code_page& other);
    ~code_page() TOVA_NOTHROW;

    const encoding_type& type() const;
    encoding_type& type();
    encoding_type& type(const encoding_type& value);  ///< Sets the value; returns the field.

    code_page& operator=(const types::nil_t& nil);
    code_page& operator=(const code_page& other);
    code_page& operator=(const encoding_type& value);

    code_page& assign(const types::nil_t&);  ///< Sets `encoding_default`.
    code_page& assign(const code_page& other);
    code_page& assign(const encoding_type& value);

    /// Whether the number is negative. An object that was assigned nil holds 0 and does not equal
    /// nil; to test for that compare with `encoding_default`.
    bool equal(const types::nil_t&) const;
    bool equal(const code_page& other) const;
    bool equal(const encoding_type& value) const;

    bool operator==(const types::nil_t& nil) const;
    bool operator==(const code_page& other) const;
    bool operator==(const encoding_type& value) const;
    bool operator!=(const code_page& other) const;
    bool operator!=(const encoding_type& value) const;

    /// The name that iconv knows `value` by. Raises `exceptions::invalid_argument_value` "Not valid
    /// code_page type" for `encoding_default` and for a number that is not in the enumeration.
    std::string to_system_type(encoding_type value) const;

    /// From Unicode to this code page.
    ///
    /// A bad 16- or 32-bit text is encoded as what `utf16_to_utf8` and `utf32_to_utf8` make of it,
    /// that is "-1". Raises what `to_system_type` raises, also for an empty text, and
    /// `exceptions::runtime_error` if iconv does not know the pair ("convertions not supported") or
    /// fails otherwise.
    std::string encode(const ustring8& text) const;
    std::string encode(const ustring16& text) const;
    std::string encode(const ustring32& text) const;

    /// From this code page to Unicode. Raises as `encode` does.
    ustring8 as_utf8(const std::string& text) const;
    ustring16 as_utf16(const std::string& text) const;
    ustring32 as_utf32(const std::string& text) const;
    std::string as_ustring(const std::string& text) const;  ///< UTF-8, as `as_utf8`.

private:
    encoding_type m_type;
};

}  // namespace strings
}  // namespace TOVA_2_18
