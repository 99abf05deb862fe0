// Case mapping, splitting into fields, and replacing.
//
// A replacement works on a copy of the input, which every library makes in the measured time.
#include <tova/strings/case.hpp>
#include <tova/strings/replace.hpp>
#include <tova/strings/split.hpp>

#include "cell.hpp"
#include "reading.hpp"

#include <random>
#include <string>
#include <vector>

#ifdef HAVE_ABSL
#include <absl/strings/ascii.h>
#include <absl/strings/str_replace.h>
#include <absl/strings/str_split.h>
#endif
#ifdef HAVE_BOOST_ALGORITHM
#include <boost/algorithm/string.hpp>
#endif
#ifdef HAVE_QT6
#include <QList>
#endif

namespace {

using bench_support::cell;
using tova::strings::ustring8;

// Words of `shortest` to `longest` letters, of both cases, with `separator` after each.
ustring8 words(std::size_t size, unsigned shortest, unsigned longest,
               const std::string& separator) {
    std::mt19937 random(1);
    ustring8 text;
    while (text.size() < size) {
        const unsigned length = shortest + random() % (longest - shortest + 1);
        for (unsigned i = 0; i < length; ++i)
            text += static_cast<char>((random() % 8 == 0 ? 'A' : 'a') + random() % 26);
        text += separator;
    }
    return text;
}

void add_case(const std::string& name, std::size_t size) {
    ustring8 made = words(size, 2, 12, " ");
    made.resize(size);
    const ustring8* const text = new ustring8(made);

    cell lower("to_lower/" + name, [text] { return to_lower(*text); });
    cell upper("to_upper/" + name, [text] { return to_upper(*text); });
    const auto floor = [text](const ustring8& mapped) {
        bench_support::read_all(*text);
        return ustring8(mapped);
    };
    lower.floor_is(floor);
    upper.floor_is(floor);
#ifdef HAVE_ABSL
    lower.add("abseil", [text] { return absl::AsciiStrToLower(*text); });
    upper.add("abseil", [text] { return absl::AsciiStrToUpper(*text); });
#endif
#ifdef HAVE_BOOST_ALGORITHM
    lower.add("boost", [text] {
        return boost::algorithm::to_lower_copy(static_cast<const std::string&>(*text));
    });
    upper.add("boost", [text] {
        return boost::algorithm::to_upper_copy(static_cast<const std::string&>(*text));
    });
#endif
#ifdef HAVE_QT6
    const QByteArray* const qt = new QByteArray(text->data(), static_cast<qsizetype>(text->size()));
    lower.add("qt", [qt] { return qt->toLower(); });
    upper.add("qt", [qt] { return qt->toUpper(); });
#endif
}

void add_split(const std::string& name, unsigned shortest, unsigned longest) {
    const ustring8* const text = new ustring8(words(64 * 1024, shortest, longest, ",") + "end");
    static const ustring8 comma(",");
    cell split("split_string/" + name, [text] { return split_string(*text, comma, 0); });

    // Fields at known places.
    const auto fields = new std::vector<ustring8>(split_string(*text, comma, 0));
    split.add("floor", [text, fields] {
        std::vector<std::string> made;
        made.reserve(fields->size());
        const char* begin = text->data();
        for (const ustring8& field : *fields) {
            made.emplace_back(begin, field.size());
            begin += field.size() + 1;
        }
        return made;
    });
#ifdef HAVE_ABSL
    split.add("abseil", [text] {
        return std::vector<std::string>(
            absl::StrSplit(static_cast<const std::string&>(*text), ','));
    });
#endif
#ifdef HAVE_BOOST_ALGORITHM
    split.add("boost", [text] {
        std::vector<std::string> made;
        boost::algorithm::split(made, static_cast<const std::string&>(*text),
                                [](char c) { return c == ','; });
        return made;
    });
#endif
#ifdef HAVE_QT6
    const QByteArray* const qt = new QByteArray(text->data(), static_cast<qsizetype>(text->size()));
    split.add("qt", [qt] { return qt->split(','); });
#endif
}

void add_replace(const std::string& name, const std::string& search,
                 const std::string& replacement) {
    const ustring8* const text = new ustring8(words(64 * 1024, 2, 60, search));
    const ustring8 from(search), to(replacement);
    cell replace("replace_all/" + name, [=] {
        ustring8 copy(*text);
        replace_all(copy, from, to);
        return copy;
    });
    replace.floor_is_a_copy();
#ifdef HAVE_ABSL
    replace.add("abseil", [=] {
        return absl::StrReplaceAll(static_cast<const std::string&>(*text), {{search, replacement}});
    });
#endif
#ifdef HAVE_BOOST_ALGORITHM
    replace.add("boost", [=] {
        return boost::algorithm::replace_all_copy(static_cast<const std::string&>(*text), search,
                                                  replacement);
    });
#endif
#ifdef HAVE_QT6
    const QByteArray* const qt = new QByteArray(text->data(), static_cast<qsizetype>(text->size()));
    const QByteArray qt_from = QByteArray::fromStdString(search);
    const QByteArray qt_to = QByteArray::fromStdString(replacement);
    replace.add("qt", [=] { return QByteArray(*qt).replace(qt_from, qt_to); });
#endif
}

const bool added = [] {
    add_case("64B", 64);
    add_case("4KiB", 4096);
    add_case("1MiB", 1 << 20);
    add_split("short", 2, 12);
    add_split("long", 20, 60);
    add_replace("same", "; ", ", ");
    add_replace("shrink", "&amp;", "&");
    add_replace("grow", "&", "&amp;");
    return true;
}();

}  // namespace
