// The six conversions between the three widths, on 64 KiB of text of several kinds. Every library
// returns a new string of its own type, which must have the length of ours.
#include <tova/strings/unicode.hpp>

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <iconv.h>
#include <string>

#ifdef HAVE_ICU
#include <unicode/unistr.h>
#endif
#ifdef HAVE_QT6
#include <QByteArray>
#include <QList>
#include <QString>
#endif
#ifdef HAVE_BOOST_LOCALE_UTF
#include <boost/locale/encoding_utf.hpp>
#endif

namespace {

namespace strings = tova::strings;

const std::size_t input_bytes = 64 * 1024;

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

// Enough sentences for `input_bytes` bytes in the width of `Source`.
template <typename Source>
Source repeated(const Source& sentence) {
    Source text;
    while (text.size() * sizeof(typename Source::value_type) < input_bytes)
        text += sentence;
    return text;
}

using result_size = std::size_t;  // in units of the target width

void add(const std::string& name, std::size_t bytes, result_size expected,
         const std::function<result_size()>& convert) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        if (convert() != expected) {
            state.SkipWithError("returns another length");
            return;
        }
        for (auto _ : state)
            benchmark::DoNotOptimize(convert());
        state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
    });
}

// iconv with a descriptor that stays open, and a buffer for the worst case.
class open_iconv {
public:
    open_iconv(const char* to, const char* from) : m_handle(iconv_open(to, from)) {}

    template <typename Target, typename Source>
    result_size convert(const Source& source, std::size_t units_of_the_worst_case) const {
        Target target(units_of_the_worst_case, 0);
        char* read =
            reinterpret_cast<char*>(const_cast<typename Source::value_type*>(source.data()));
        std::size_t left = source.size() * sizeof(typename Source::value_type);
        char* write = reinterpret_cast<char*>(&target[0]);
        std::size_t room = target.size() * sizeof(typename Target::value_type);
        iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
        iconv(m_handle, &read, &left, &write, &room);
        target.resize(target.size() - room / sizeof(typename Target::value_type));
        benchmark::DoNotOptimize(target.data());
        return target.size();
    }

private:
    iconv_t m_handle;  // for the life of the program
};

template <typename Result>
result_size used(const Result& result) {
    benchmark::DoNotOptimize(result.data());
    return static_cast<result_size>(result.size());
}

#ifdef HAVE_ICU
icu::UnicodeString icu_from_utf32(const std::u32string& text) {
    return icu::UnicodeString::fromUTF32(reinterpret_cast<const UChar32*>(text.data()),
                                         static_cast<std::int32_t>(text.size()));
}

result_size icu_to_utf32(const icu::UnicodeString& text) {
    std::u32string result(static_cast<std::size_t>(text.length()), 0);
    UErrorCode error = U_ZERO_ERROR;
    const std::int32_t length = text.toUTF32(reinterpret_cast<UChar32*>(&result[0]),
                                             static_cast<std::int32_t>(result.size()), error);
    result.resize(static_cast<std::size_t>(length));
    return used(result);
}

result_size icu_to_utf8(const icu::UnicodeString& text) {
    std::string result;
    text.toUTF8String(result);
    return used(result);
}

result_size icu_used(const icu::UnicodeString& text) {
    benchmark::DoNotOptimize(text.getBuffer());
    return static_cast<result_size>(text.length());
}
#endif

void add_from_utf8(const std::string& kind, const std::string& sentence) {
    const std::string text = repeated(sentence);
    const std::size_t size = text.size();

    const strings::ustring8 ours(text);
    const result_size units = utf8_to_utf16(ours).size();
    const result_size points = utf8_to_utf32(ours).size();
    const std::string to_16 = "utf8_to_utf16/" + kind;
    const std::string to_32 = "utf8_to_utf32/" + kind;
    add(to_16 + "/tova", size, units, [=] { return used(utf8_to_utf16(ours)); });
    add(to_32 + "/tova", size, points, [=] { return used(utf8_to_utf32(ours)); });

    const open_iconv iconv_16("UTF-16LE", "UTF-8");
    const open_iconv iconv_32("UTF-32LE", "UTF-8");
    add(to_16 + "/iconv", size, units,
        [=] { return iconv_16.convert<std::u16string>(text, size); });
    add(to_32 + "/iconv", size, points,
        [=] { return iconv_32.convert<std::u32string>(text, size); });
#ifdef HAVE_ICU
    add(to_16 + "/icu", size, units, [=] { return icu_used(icu::UnicodeString::fromUTF8(text)); });
    add(to_32 + "/icu", size, points,
        [=] { return icu_to_utf32(icu::UnicodeString::fromUTF8(text)); });
#endif
#ifdef HAVE_QT6
    add(to_16 + "/qt", size, units, [=] { return used(QString::fromUtf8(text.data(), size)); });
    add(to_32 + "/qt", size, points,
        [=] { return used(QString::fromUtf8(text.data(), size).toUcs4()); });
#endif
#ifdef HAVE_BOOST_LOCALE_UTF
    add(to_16 + "/boost", size, units,
        [=] { return used(boost::locale::conv::utf_to_utf<char16_t>(text)); });
    add(to_32 + "/boost", size, points,
        [=] { return used(boost::locale::conv::utf_to_utf<char32_t>(text)); });
#endif
}

void add_from_utf16(const std::string& kind, const std::string& sentence) {
    const strings::ustring16 ours = repeated(strings::utf8_to_utf16(sentence));
    const std::u16string text(ours.begin(), ours.end());
    const std::size_t size = text.size();
    const std::size_t bytes = 2 * size;

    const result_size units = utf16_to_utf8(ours).size();
    const result_size points = utf16_to_utf32(ours).size();
    const std::string to_8 = "utf16_to_utf8/" + kind;
    const std::string to_32 = "utf16_to_utf32/" + kind;
    add(to_8 + "/tova", bytes, units, [=] { return used(utf16_to_utf8(ours)); });
    add(to_32 + "/tova", bytes, points, [=] { return used(utf16_to_utf32(ours)); });

    const open_iconv iconv_8("UTF-8", "UTF-16LE");
    const open_iconv iconv_32("UTF-32LE", "UTF-16LE");
    add(to_8 + "/iconv", bytes, units,
        [=] { return iconv_8.convert<std::string>(text, 3 * size); });
    add(to_32 + "/iconv", bytes, points,
        [=] { return iconv_32.convert<std::u32string>(text, size); });
#ifdef HAVE_ICU
    const icu::UnicodeString theirs(text.data(), static_cast<std::int32_t>(size));
    add(to_8 + "/icu", bytes, units, [=] { return icu_to_utf8(theirs); });
    add(to_32 + "/icu", bytes, points, [=] { return icu_to_utf32(theirs); });
#endif
#ifdef HAVE_QT6
    const QString qt = QString::fromUtf16(text.data(), static_cast<qsizetype>(size));
    add(to_8 + "/qt", bytes, units, [=] { return used(qt.toUtf8()); });
    add(to_32 + "/qt", bytes, points, [=] { return used(qt.toUcs4()); });
#endif
#ifdef HAVE_BOOST_LOCALE_UTF
    add(to_8 + "/boost", bytes, units,
        [=] { return used(boost::locale::conv::utf_to_utf<char>(text)); });
    add(to_32 + "/boost", bytes, points,
        [=] { return used(boost::locale::conv::utf_to_utf<char32_t>(text)); });
#endif
}

void add_from_utf32(const std::string& kind, const std::string& sentence) {
    const strings::ustring32 ours = repeated(strings::utf8_to_utf32(sentence));
    const std::u32string text(ours.begin(), ours.end());
    const std::size_t size = text.size();
    const std::size_t bytes = 4 * size;

    const result_size bytes_8 = utf32_to_utf8(ours).size();
    const result_size units = utf32_to_utf16(ours).size();
    const std::string to_8 = "utf32_to_utf8/" + kind;
    const std::string to_16 = "utf32_to_utf16/" + kind;
    add(to_8 + "/tova", bytes, bytes_8, [=] { return used(utf32_to_utf8(ours)); });
    add(to_16 + "/tova", bytes, units, [=] { return used(utf32_to_utf16(ours)); });

    const open_iconv iconv_8("UTF-8", "UTF-32LE");
    const open_iconv iconv_16("UTF-16LE", "UTF-32LE");
    add(to_8 + "/iconv", bytes, bytes_8,
        [=] { return iconv_8.convert<std::string>(text, 4 * size); });
    add(to_16 + "/iconv", bytes, units,
        [=] { return iconv_16.convert<std::u16string>(text, 2 * size); });
#ifdef HAVE_ICU
    add(to_8 + "/icu", bytes, bytes_8, [=] { return icu_to_utf8(icu_from_utf32(text)); });
    add(to_16 + "/icu", bytes, units, [=] { return icu_used(icu_from_utf32(text)); });
#endif
#ifdef HAVE_QT6
    const auto to_qt = [=] { return QString::fromUcs4(text.data(), static_cast<qsizetype>(size)); };
    add(to_8 + "/qt", bytes, bytes_8, [=] { return used(to_qt().toUtf8()); });
    add(to_16 + "/qt", bytes, units, [=] { return used(to_qt()); });
#endif
#ifdef HAVE_BOOST_LOCALE_UTF
    add(to_8 + "/boost", bytes, bytes_8,
        [=] { return used(boost::locale::conv::utf_to_utf<char>(text)); });
    add(to_16 + "/boost", bytes, units,
        [=] { return used(boost::locale::conv::utf_to_utf<char16_t>(text)); });
#endif
}

const bool added = [] {
    for (const auto& text : texts) {
        add_from_utf8(text.kind, text.sentence);
        add_from_utf16(text.kind, text.sentence);
        add_from_utf32(text.kind, text.sentence);
    }
    return true;
}();

}  // namespace
