// The six conversions between the three widths: strings of several kinds and sizes, each to a new
// string of the library's own type.
//
// The floor of a conversion reads its source and copies the finished result.
//
// A string has as many bytes as its name says, in the width of its source, or a few less: it ends
// with a whole character.
#include <tova/strings/unicode.hpp>

#include "cell.hpp"
#include "reading.hpp"

#include <iconv.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <type_traits>

#ifdef HAVE_ICU
#include <unicode/unistr.h>
#endif
#ifdef HAVE_QT6
#include <QList>
#endif
#ifdef HAVE_BOOST_LOCALE_UTF
#include <boost/locale/encoding_utf.hpp>
#endif

#ifdef HAVE_ICU
namespace bench_support {

template <>
struct comparable<icu::UnicodeString> {
    static std::u16string_view of(const icu::UnicodeString& text) {
        return {text.getBuffer(), static_cast<std::size_t>(text.length())};
    }
};

}  // namespace bench_support
#endif

namespace {

namespace strings = tova::strings;
using bench_support::cell;
using bench_support::same_size;

const struct {
    const char* kind;
    const char* sentence;  // UTF-8
} texts[] = {
    {"ascii", "The quick brown fox jumps over the lazy dog, 1234567890 times a day.\n"},
    {"latin", "Zw\u00f6lf Boxk\u00e4mpfer jagen Viktor quer \u00fcber den gro\u00dfen Sylter "
              "Deich. O\u00f9 est le ma\u00eetre d'h\u00f4tel fran\u00e7ais ?\n"},
    {"cyrillic", "\u0421\u044a\u0435\u0448\u044c \u0436\u0435 \u0435\u0449\u0451 \u044d\u0442\u0438"
                 "\u0445 \u043c\u044f\u0433\u043a\u0438\u0445 \u0444\u0440\u0430\u043d\u0446\u0443"
                 "\u0437\u0441\u043a\u0438\u0445 \u0431\u0443\u043b\u043e\u043a, \u0434\u0430 "
                 "\u0432\u044b\u043f\u0435\u0439 \u0447\u0430\u044e.\n"},
    {"cjk", "\u5b57\u4e32\u8f49\u63db\u7684\u901f\u5ea6\u5f88\u91cd\u8981\u3002\u3044\u308d\u306f"
            "\u306b\u307b\u3078\u3068\u3061\u308a\u306c\u308b\u3092\u308f\u304b\u3088\u305f\u308c"
            "\u305d\u3001\ud55c\uad6d\uc5b4\ub3c4 \uc788\ub2e4\u3002\n"},
    {"emoji", "\U0001F600\U0001F603\U0001F604\U0001F601\U0001F606\U0001F605\U0001F923\U0001F602"
              "\U0001F642\U0001F643\U0001F609\U0001F60A\U0001F607\U0001F970\U0001F60D\n"},
    {"mixed", "Plain words, na\u00efve caf\u00e9, \u041c\u043e\u0441\u043a\u0432\u0430 "
              "\u2014 \u6771\u4eac \u20ac 12,50 \U0001F680 <tag id='7'>and more</tag>\n"},
};

const struct {
    const char* name;
    std::size_t bytes;
} sizes[] = {{"64B", 64}, {"4KiB", 4096}, {"1MiB", 1 << 20}};

std::size_t bytes_of(wchar_t character, std::size_t width) {
    if (width == 4)
        return 4;
    if (width == 2)
        return character < 0x10000 ? 2 : 4;
    return character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
}

// One text as a source of one width, in the types of all libraries. Made when a cell needs it.
struct source {
    std::string sentence;
    std::size_t bytes;
    std::size_t width;

    strings::ustring8 utf8;
    strings::ustring16 utf16;
    strings::ustring32 utf32;
    std::u16string u16;
    std::u32string u32;
#ifdef HAVE_ICU
    icu::UnicodeString icu;
#endif
#ifdef HAVE_QT6
    QString qt;
#endif

    void fill() {
        if (!utf8.empty())
            return;
        const strings::ustring32 characters = strings::utf8_to_utf32(sentence);
        std::size_t used = 0;
        for (std::size_t i = 0;; ++i) {
            const wchar_t next = characters[i % characters.size()];
            used += bytes_of(next, width);
            if (used > bytes)
                break;
            utf32 += next;
        }
        utf8 = strings::utf32_to_utf8(utf32);
        utf16 = strings::utf8_to_utf16(utf8);
        u16.assign(utf16.begin(), utf16.end());
        u32.assign(utf32.begin(), utf32.end());
#ifdef HAVE_ICU
        icu = icu::UnicodeString(u16.data(), static_cast<std::int32_t>(u16.size()));
#endif
#ifdef HAVE_QT6
        qt = QString::fromUtf16(u16.data(), static_cast<qsizetype>(u16.size()));
#endif
    }
};

// iconv with a descriptor that stays open, and a buffer for the worst case.
class open_iconv {
public:
    open_iconv(const char* to, const char* from) : m_handle(iconv_open(to, from)) {}

    template <typename Target, typename Source>
    Target convert(const Source& text, std::size_t units_of_the_worst_case) const {
        Target target(units_of_the_worst_case, 0);
        char* read = reinterpret_cast<char*>(const_cast<typename Source::value_type*>(text.data()));
        std::size_t left = text.size() * sizeof(typename Source::value_type);
        char* write = reinterpret_cast<char*>(&target[0]);
        std::size_t room = target.size() * sizeof(typename Target::value_type);
        iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
        iconv(m_handle, &read, &left, &write, &room);
        target.resize(target.size() - room / sizeof(typename Target::value_type));
        return target;
    }

private:
    iconv_t m_handle;  // for the life of the program
};

#ifdef HAVE_ICU
icu::UnicodeString icu_from_utf32(const std::u32string& text) {
    return icu::UnicodeString::fromUTF32(reinterpret_cast<const UChar32*>(text.data()),
                                         static_cast<std::int32_t>(text.size()));
}

std::u32string icu_to_utf32(const icu::UnicodeString& text) {
    std::u32string result(static_cast<std::size_t>(text.length()), 0);
    UErrorCode error = U_ZERO_ERROR;
    const std::int32_t length = text.toUTF32(reinterpret_cast<UChar32*>(&result[0]),
                                             static_cast<std::int32_t>(result.size()), error);
    result.resize(static_cast<std::size_t>(length));
    return result;
}

std::string icu_to_utf8(const icu::UnicodeString& text) {
    std::string result;
    text.toUTF8String(result);
    return result;
}
#endif

#ifdef HAVE_QT6
QString qt_from_utf8(const std::string& text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString qt_from_utf32(const std::u32string& text) {
    return QString::fromUcs4(text.data(), static_cast<qsizetype>(text.size()));
}
#endif

// `utf32_to_utf8` promises a capacity of two bytes for each unit of the source.
template <typename Text, typename Result>
constexpr bool operation_reserves() {
    return std::is_same<Text, strings::ustring32>::value &&
           std::is_same<Result, strings::ustring8>::value;
}

template <typename Result>
Result reserved_copy(const Result& text, std::size_t capacity) {
    Result copy;
    copy.reserve(std::max(capacity, text.size()));
    copy.append(text);
    return copy;
}

template <typename Text, typename Ours>
cell<Ours> begin(const std::string& operation, const std::string& text, source* from,
                 Text source::*units, const Ours& ours) {
    typedef typename cell<Ours>::result result;
    cell<Ours> made(operation + "/" + text, ours, [from] { from->fill(); });
    made.floor_is([from, units](const result& converted) {
        bench_support::read_all(from->*units);
        if (operation_reserves<Text, result>())
            return reserved_copy(converted, 2 * (from->*units).size());
        return result(converted);
    });
    return made;
}

void add_from_utf8(const std::string& name, source* from) {
    auto to_16 = begin("utf8_to_utf16", name, from, &source::utf8,
                       [from] { return utf8_to_utf16(from->utf8); });
    auto to_32 = begin("utf8_to_utf32", name, from, &source::utf8,
                       [from] { return utf8_to_utf32(from->utf8); });
    static const open_iconv iconv_16("UTF-16LE", "UTF-8"), iconv_32("UTF-32LE", "UTF-8");
    to_16.add("iconv",
              [from] { return iconv_16.convert<std::u16string>(from->utf8, from->utf8.size()); });
    to_32.add("iconv",
              [from] { return iconv_32.convert<std::u32string>(from->utf8, from->utf8.size()); });
#ifdef HAVE_ICU
    to_16.add("icu", [from] { return icu::UnicodeString::fromUTF8(from->utf8); });
    to_32.add("icu", [from] { return icu_to_utf32(icu::UnicodeString::fromUTF8(from->utf8)); });
#endif
#ifdef HAVE_QT6
    to_16.add("qt", [from] { return qt_from_utf8(from->utf8); });
    to_32.add("qt", [from] { return qt_from_utf8(from->utf8).toUcs4(); });
#endif
#ifdef HAVE_BOOST_LOCALE_UTF
    to_16.add("boost", [from] { return boost::locale::conv::utf_to_utf<char16_t>(from->utf8); });
    to_32.add("boost", [from] { return boost::locale::conv::utf_to_utf<char32_t>(from->utf8); });
#endif
}

void add_from_utf16(const std::string& name, source* from) {
    auto to_8 = begin("utf16_to_utf8", name, from, &source::utf16,
                      [from] { return utf16_to_utf8(from->utf16); });
    auto to_32 = begin("utf16_to_utf32", name, from, &source::utf16,
                       [from] { return utf16_to_utf32(from->utf16); });
    static const open_iconv iconv_8("UTF-8", "UTF-16LE"), iconv_32("UTF-32LE", "UTF-16LE");
    to_8.add("iconv",
             [from] { return iconv_8.convert<std::string>(from->u16, 3 * from->u16.size()); });
    to_32.add("iconv",
              [from] { return iconv_32.convert<std::u32string>(from->u16, from->u16.size()); });
#ifdef HAVE_ICU
    to_8.add("icu", [from] { return icu_to_utf8(from->icu); });
    to_32.add("icu", [from] { return icu_to_utf32(from->icu); });
#endif
#ifdef HAVE_QT6
    to_8.add("qt", [from] { return from->qt.toUtf8(); });
    to_32.add("qt", [from] { return from->qt.toUcs4(); });
#endif
#ifdef HAVE_BOOST_LOCALE_UTF
    to_8.add("boost", [from] { return boost::locale::conv::utf_to_utf<char>(from->u16); });
    to_32.add("boost", [from] { return boost::locale::conv::utf_to_utf<char32_t>(from->u16); });
#endif
}

// Our pairs are not those of UTF-16, so the results to 16 bits agree in their length only.
void add_from_utf32(const std::string& name, source* from) {
    auto to_8 = begin("utf32_to_utf8", name, from, &source::utf32,
                      [from] { return utf32_to_utf8(from->utf32); });
    auto to_16 = begin("utf32_to_utf16", name, from, &source::utf32,
                       [from] { return utf32_to_utf16(from->utf32); });
    static const open_iconv iconv_8("UTF-8", "UTF-32LE"), iconv_16("UTF-16LE", "UTF-32LE");
    to_8.add("iconv",
             [from] { return iconv_8.convert<std::string>(from->u32, 4 * from->u32.size()); });
    to_16.add(
        "iconv",
        [from] { return iconv_16.convert<std::u16string>(from->u32, 2 * from->u32.size()); },
        same_size());
#ifdef HAVE_ICU
    to_8.add("icu", [from] { return icu_to_utf8(icu_from_utf32(from->u32)); });
    to_16.add(
        "icu", [from] { return icu_from_utf32(from->u32); }, same_size());
#endif
#ifdef HAVE_QT6
    to_8.add("qt", [from] { return qt_from_utf32(from->u32).toUtf8(); });
    to_16.add(
        "qt", [from] { return qt_from_utf32(from->u32); }, same_size());
#endif
#ifdef HAVE_BOOST_LOCALE_UTF
    to_8.add("boost", [from] { return boost::locale::conv::utf_to_utf<char>(from->u32); });
    to_16.add(
        "boost", [from] { return boost::locale::conv::utf_to_utf<char16_t>(from->u32); },
        same_size());
#endif
}

// The sources stay until the program ends.
source* made(const char* sentence, std::size_t bytes, std::size_t width) {
    source* const from = new source;
    from->sentence = sentence;
    from->bytes = bytes;
    from->width = width;
    return from;
}

const bool added = [] {
    for (const auto& text : texts) {
        for (const auto& size : sizes) {
            const std::string name = std::string(text.kind) + "/" + size.name;
            add_from_utf8(name, made(text.sentence, size.bytes, 1));
            add_from_utf16(name, made(text.sentence, size.bytes, 2));
            add_from_utf32(name, made(text.sentence, size.bytes, 4));
        }
    }
    return true;
}();

}  // namespace
