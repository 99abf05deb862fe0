// Compares every form of the conversion loops with the portable one: the same result, the same
// position of the first invalid character, the same sizes. The sources end at an inaccessible page,
// and the results end at guard units, so accesses past either are detected.
//
// This program compiles the kernels itself, because they are not exported.
#include <tova/abi.hpp>

#include "strings/unicode_kernels.hpp"

#include <gtest/gtest.h>

#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using tova::detail::cpu_form;
namespace kernels = tova::strings::kernels;

const std::size_t page = 4096;
const std::size_t pages = 16;

// Memory directly before an inaccessible page.
class guarded {
public:
    guarded()
        : m_memory(static_cast<char*>(mmap(nullptr, (pages + 1) * page, PROT_READ | PROT_WRITE,
                                           MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
        if (mprotect(m_memory + pages * page, page, PROT_NONE) != 0)
            ADD_FAILURE() << "mprotect";
    }
    ~guarded() { munmap(m_memory, (pages + 1) * page); }
    guarded(const guarded&) = delete;
    guarded& operator=(const guarded&) = delete;

    // A copy that ends `gap` units before the guard page.
    template <typename Unit>
    Unit* place(const Unit* units, std::size_t size, std::size_t gap) {
        Unit* const at = end<Unit>() - gap - size;
        if (size > 0)
            std::memcpy(at, units, size * sizeof(Unit));
        return at;
    }

    template <typename Unit>
    Unit* end() {
        return reinterpret_cast<Unit*>(m_memory + pages * page);
    }

private:
    char* m_memory;
};

class UnicodeKernels : public ::testing::TestWithParam<cpu_form> {
protected:
    template <typename Source, typename Target>
    void compare(const std::vector<Source>& source, std::size_t gap,
                 kernels::conversion<Source, Target> kernels::unicode_form::*conversion) {
        const kernels::conversion<Source, Target>& portable = m_portable.*conversion;
        const kernels::conversion<Source, Target>& form = m_form.*conversion;
        const Source* const from = m_source.place(source.data(), source.size(), gap);
        const std::size_t size = source.size();
        const std::size_t room = portable.measure(from, size);
        std::vector<Target> expected(4 * size + 8);
        const kernels::progress to_expect =
            portable.convert(from, size, expected.data(), expected.size());

        EXPECT_EQ(room, form.measure(from, size)) << "the measure of " << size << " units";
        EXPECT_LE(to_expect.written, room);
        // Converts with exactly the measured room, and again with more.
        for (const std::size_t more : {std::size_t(0), std::size_t(100)}) {
            Target* const to = m_target.end<Target>() - room - more;
            Target before[4];
            std::memset(to - 4, 0x5A, sizeof before);
            std::memset(before, 0x5A, sizeof before);
            const kernels::progress done = form.convert(from, size, to, room + more);
            if (done.read != to_expect.read || done.written != to_expect.written ||
                !std::equal(to, to + done.written, expected.data()) ||
                std::memcmp(to - 4, before, sizeof before) != 0)
                ADD_FAILURE() << sizeof(Source) << " to " << sizeof(Target) << " of " << size
                              << " units differs: " << done.read << ", " << done.written
                              << " and not " << to_expect.read << ", " << to_expect.written
                              << show(source);
        }
    }

    // The portable form stops at the first unit that is not simple. The others stop up to 63 units
    // before it.
    template <typename Source, typename Target>
    void compare_simple(const std::vector<Source>& source, std::size_t gap,
                        kernels::conversion<Source, Target> kernels::unicode_form::*conversion) {
        const Source* const from = m_source.place(source.data(), source.size(), gap);
        const std::size_t size = source.size();
        std::vector<Target> expected(size + 1);
        const std::size_t most = (m_portable.*conversion).simple(from, size, expected.data());
        Target* const to = m_target.end<Target>() - size;
        const std::size_t done = (m_form.*conversion).simple(from, size, to);
        if (done > most || most - done > 63 || (most == size && done != size) ||
            !std::equal(to, to + done, expected.data()))
            ADD_FAILURE() << sizeof(Source) << " to " << sizeof(Target) << " of " << size
                          << " simple units differs: " << done << " and not " << most
                          << show(source);
    }

    template <typename Unit>
    static std::string show(const std::vector<Unit>& units) {
        std::string text = ":";
        char number[16];
        for (std::size_t i = 0; i < std::min<std::size_t>(units.size(), 200); ++i) {
            std::snprintf(number, sizeof number, " %X", static_cast<unsigned int>(units[i]));
            text += number;
        }
        return text;
    }

    void check(const std::vector<unsigned char>& bytes, std::size_t gap = 0) {
        compare(bytes, gap, &kernels::unicode_form::utf8_to_utf16);
        compare(bytes, gap, &kernels::unicode_form::utf8_to_utf32);
        compare_simple(bytes, gap, &kernels::unicode_form::utf8_to_utf16);
        compare_simple(bytes, gap, &kernels::unicode_form::utf8_to_utf32);
    }
    void check(const std::vector<unsigned short>& units, std::size_t gap = 0) {
        compare(units, gap, &kernels::unicode_form::utf16_to_utf8);
        compare(units, gap, &kernels::unicode_form::utf16_to_utf32);
        compare_simple(units, gap, &kernels::unicode_form::utf16_to_utf8);
        compare_simple(units, gap, &kernels::unicode_form::utf16_to_utf32);
    }
    void check(const std::vector<wchar_t>& points, std::size_t gap = 0) {
        compare(points, gap, &kernels::unicode_form::utf32_to_utf8);
        compare(points, gap, &kernels::unicode_form::utf32_to_utf16);
        compare_simple(points, gap, &kernels::unicode_form::utf32_to_utf8);
        compare_simple(points, gap, &kernels::unicode_form::utf32_to_utf16);
    }

    const kernels::unicode_form& m_portable = kernels::unicode_portable;
    const kernels::unicode_form& m_form = kernels::unicode(GetParam());
    guarded m_source;
    guarded m_target;
};

template <typename Unit>
void append(std::vector<Unit>& to, const std::vector<Unit>& units) {
    to.insert(to.end(), units.begin(), units.end());
}

// A value up to 0x1FFFFF in the form of 1 to 4 bytes, overlong or not.
std::vector<unsigned char> sequence(unsigned int value, std::size_t bytes) {
    const unsigned int leads[] = {0, 0xC0, 0xE0, 0xF0};
    std::vector<unsigned char> result(bytes);
    for (std::size_t i = bytes; i-- > 1; value >>= 6)
        result[i] = static_cast<unsigned char>(0x80 | (value & 0x3F));
    const unsigned int room[] = {0x7F, 0x1F, 0x0F, 0x07};
    result[0] = static_cast<unsigned char>(leads[bytes - 1] | (value & room[bytes - 1]));
    return result;
}

std::size_t shortest(unsigned int value) {
    return value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
}

TEST_P(UnicodeKernels, ConvertEveryCodePoint) {
    for (unsigned int first = 0; first < 0x200000; first += 0x80) {
        std::vector<unsigned char> bytes;
        std::vector<unsigned short> units;
        std::vector<wchar_t> points;
        for (unsigned int value = first; value < first + 0x80; ++value) {
            append(bytes, sequence(value, shortest(value)));
            points.push_back(static_cast<wchar_t>(value));
            if (value < 0x10000) {
                units.push_back(static_cast<unsigned short>(value));
            } else if (value < 0x110000) {
                units.push_back(static_cast<unsigned short>(0xD800 + ((value - 0x10000) >> 10)));
                units.push_back(static_cast<unsigned short>(0xDC00 + (value & 0x3FF)));
            }
        }
        check(bytes);
        check(units);
        check(points);
    }
}

TEST_P(UnicodeKernels, ConvertOverlongSequences) {
    for (std::size_t bytes = 2; bytes <= 4; ++bytes) {
        std::vector<unsigned char> text;
        for (unsigned int value = 0; value < (bytes == 2 ? 0x80u : 0x10000u); ++value) {
            append(text, sequence(value & (bytes == 3 ? 0x7FFu : 0xFFFFu), bytes));
            if (text.size() > 300) {
                check(text);
                text.clear();
            }
        }
        check(text);
    }
}

// Strings of ASCII and of longer characters, into which the tests insert other units.
std::vector<std::vector<unsigned char>> fillings(std::size_t size) {
    const std::vector<unsigned int> letters = {'a', 0xE9, 0x4E2D, 0x1F600};
    std::vector<std::vector<unsigned char>> result;
    for (const unsigned int letter : letters) {
        std::vector<unsigned char> text;
        while (text.size() < size)
            append(text, sequence(letter, shortest(letter)));
        text.resize(size);
        result.push_back(text);
    }
    return result;
}

TEST_P(UnicodeKernels, CheckEveryPairOfBytes) {
    for (const std::vector<unsigned char>& filling : fillings(96))
        for (unsigned int pair = 0; pair < 0x10000; ++pair) {
            std::vector<unsigned char> text = filling;
            const std::size_t at = (pair * 7) % 72;
            text[at] = static_cast<unsigned char>(pair >> 8);
            text[at + 1] = static_cast<unsigned char>(pair);
            check(text);
        }
    for (unsigned int pair = 0; pair < 0x10000; ++pair)
        check(std::vector<unsigned char>{static_cast<unsigned char>(pair >> 8),
                                         static_cast<unsigned char>(pair)});
}

TEST_P(UnicodeKernels, FindEveryInvalidSequenceAtEveryOffset) {
    const std::vector<std::vector<unsigned char>> invalid = {{0x80},
                                                             {0xBF},
                                                             {0xC3},
                                                             {0xE4},
                                                             {0xE4, 0xB8},
                                                             {0xF0},
                                                             {0xF0, 0x9F},
                                                             {0xF0, 0x9F, 0x98},
                                                             {0xF8},
                                                             {0xFF},
                                                             {0xF8, 0x88, 0x80, 0x80, 0x80},
                                                             {0xC3, 0xA9, 0xA9},
                                                             {0xE4, 0xB8, 0xAD, 0x80},
                                                             {0xF0, 0x9F, 0x98, 0x80, 0x80},
                                                             {0xE4, 0x41, 0xAD},
                                                             {0xF0, 0x9F, 0x41, 0x80},
                                                             {0xC3, 0xC3}};
    const std::vector<std::vector<unsigned char>> characters = {
        {'a'}, {0xC3, 0xA9}, {0xE4, 0xB8, 0xAD}, {0xF0, 0x9F, 0x98, 0x80}};
    for (const auto& character : characters)
        for (const auto& wrong : invalid)
            for (std::size_t before = 0; before <= 150; ++before)
                for (const std::size_t after : {0, 1, 3, 61, 70}) {
                    std::vector<unsigned char> text;
                    for (std::size_t i = 0; i < before; ++i)
                        append(text, i % 5 == 4 ? characters[i % 4] : character);
                    append(text, wrong);
                    for (std::size_t i = 0; i < after; ++i)
                        append(text, character);
                    check(text);
                }
}

TEST_P(UnicodeKernels, FindEveryUnpairedSurrogateAtEveryOffset) {
    const std::vector<std::vector<unsigned short>> invalid = {{0xD800},
                                                              {0xDBFF},
                                                              {0xDC00},
                                                              {0xDFFF},
                                                              {0xDC00, 0xD800},
                                                              {0xD800, 0xD800, 0xDC00},
                                                              {0xD800, 0xDC00, 0xDC00},
                                                              {0xD83D, 'a', 0xDE00}};
    const std::vector<std::vector<unsigned short>> characters = {
        {'a'}, {0xE9}, {0x4E2D}, {0xD83D, 0xDE00}};
    for (const auto& character : characters)
        for (const auto& wrong : invalid)
            for (std::size_t before = 0; before <= 100; ++before)
                for (const std::size_t after : {0, 1, 31, 40}) {
                    std::vector<unsigned short> text;
                    for (std::size_t i = 0; i < before; ++i)
                        append(text, i % 5 == 4 ? characters[i % 4] : character);
                    append(text, wrong);
                    for (std::size_t i = 0; i < after; ++i)
                        append(text, character);
                    check(text);
                }
}

TEST_P(UnicodeKernels, TreatEveryLimitOf32BitsAtEveryOffset) {
    const int limits[] = {
        -0x7FFFFFFF - 1, -0x10000, -0x2800,  -0x80,     -1,     0,      0x7F,   0x80,
        0x7FF,           0x800,    0xD7FF,   0xD800,    0xDFFF, 0xE000, 0xFFFE, 0xFFFF,
        0x10000,         0x10FFFF, 0x110000, 0x7FFFFFFF};
    for (const wchar_t letter : {L'a', L'\xE9', L'\x4E2D', L'\x1F600'})
        for (const int limit : limits)
            for (std::size_t before = 0; before <= 70; ++before)
                for (const std::size_t after : {0, 1, 33}) {
                    std::vector<wchar_t> text(before + 1 + after, letter);
                    text[before] = limit;
                    check(text);
                }
}

// Some forms convert a source of up to 64 bytes without loops.
TEST_P(UnicodeKernels, CheckEveryOffsetOfEveryShortSource) {
    for (std::size_t length = 1; length <= 66; ++length)
        for (const std::vector<unsigned char>& filling : fillings(length))
            for (const unsigned char byte : {0x00, 0x7F, 0x80, 0xBF, 0xC3, 0xE4, 0xF0, 0xF8, 0xFF})
                for (std::size_t at = 0; at < length; ++at) {
                    std::vector<unsigned char> text = filling;
                    text[at] = byte;
                    check(text);
                }
    const std::vector<std::vector<unsigned short>> characters = {
        {'a', 'b'}, {0xE9, 'a'}, {0x4E2D, 0xE9}, {0xD83D, 0xDE00}};
    for (std::size_t length = 1; length <= 34; ++length)
        for (const std::vector<unsigned short>& pair : characters)
            for (const unsigned short unit :
                 {0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFF})
                for (std::size_t at = 0; at < length; ++at) {
                    std::vector<unsigned short> text;
                    while (text.size() < length)
                        append(text, pair);
                    text.resize(length);
                    text[at] = unit;
                    check(text);
                }
    for (std::size_t length = 1; length <= 18; ++length)
        for (const wchar_t letter : {L'a', L'\xE9', L'\x4E2D', L'\x1F600'})
            for (const int limit :
                 {-0x7FFFFFFF - 1, -1, 0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xD800, 0xDFFF, 0xE000,
                  0xFFFE, 0xFFFF, 0x10000, 0x10FFFF, 0x110000, 0x7FFFFFFF})
                for (std::size_t at = 0; at < length; ++at) {
                    std::vector<wchar_t> text(length, letter);
                    text[at] = limit;
                    check(text);
                }
}

// Characters of one kind, of all kinds in turn, and bytes or units of any value.
TEST_P(UnicodeKernels, ConvertEveryLengthAtEveryAlignment) {
    std::mt19937 engine(11);
    const auto random = [&] { return static_cast<unsigned int>(engine()); };
    for (std::size_t length = 0; length <= 300; ++length)
        for (std::size_t gap = 0; gap < 64; gap += length < 70 ? 1 : 1 + random() % 9) {
            const unsigned int kind = random() % 8;
            const unsigned int base = random() % 0xD000;
            std::vector<unsigned char> bytes;
            std::vector<unsigned short> units;
            std::vector<wchar_t> points;
            const auto point = [&]() -> unsigned int {
                switch (kind < 5 ? kind : random() % 5) {
                case 0:
                    return random() % 0x80;
                case 1:
                    return random() % 0x800;
                case 2:
                    return 0x800 + random() % 0xD000;
                case 3:
                    return 0x10000 + random() % 0x100000;
                default:
                    return base + random() % 0x80;
                }
            };
            while (bytes.size() < length) {
                const unsigned int value = point();
                append(bytes, sequence(value, shortest(value)));
            }
            while (units.size() < length) {
                const unsigned int value = point();
                if (value >= 0x10000) {
                    units.push_back(static_cast<unsigned short>(0xD7C0 + (value >> 10)));
                    units.push_back(static_cast<unsigned short>(0xDC00 + (value & 0x3FF)));
                } else {
                    units.push_back(static_cast<unsigned short>(value));
                }
            }
            while (points.size() < length)
                points.push_back(static_cast<wchar_t>(point()));
            bytes.resize(length);
            units.resize(length);
            check(bytes, gap);
            check(units, gap);
            check(points, gap);
            if (length > 0 && random() % 2) {
                bytes[random() % length] = static_cast<unsigned char>(random());
                units[random() % length] = static_cast<unsigned short>(random());
                points[random() % length] = static_cast<wchar_t>(random());
                check(bytes, gap);
                check(units, gap);
                check(points, gap);
            }
        }
}

// The vector forms have loops for runs of ASCII, of one or two bytes each, and of longer
// characters. Runs of any length end at any position of these.
TEST_P(UnicodeKernels, ConvertRunsOfOneKindAfterAnother) {
    std::mt19937 engine(13);
    const auto below = [&](unsigned int limit) {
        return static_cast<unsigned int>(engine()) % limit;
    };
    for (int round = 0; round < 1500; ++round) {
        std::vector<unsigned char> bytes;
        std::vector<unsigned short> units;
        std::vector<wchar_t> points;
        while (points.size() < 900) {
            const unsigned int kind = below(6);
            for (unsigned int left = 1 + below(below(3) == 0 ? 500 : 80); left > 0; --left) {
                const unsigned int value = kind == 0   ? below(0x80)
                                           : kind == 1 ? (below(12) == 0 ? 0xE9 : 'a')
                                           : kind == 2 ? 0x410 + below(0x40)
                                           : kind == 3 ? below(0x800)
                                           : kind == 4 ? 0x4E00 + below(0x3000)
                                                       : 0x1F600 + below(0x40);
                append(bytes, sequence(value, shortest(value)));
                if (value >= 0x10000) {
                    units.push_back(static_cast<unsigned short>(0xD7C0 + (value >> 10)));
                    units.push_back(static_cast<unsigned short>(0xDC00 + (value & 0x3FF)));
                } else {
                    units.push_back(static_cast<unsigned short>(value));
                }
                points.push_back(static_cast<wchar_t>(value));
            }
        }
        const std::size_t gap = below(64);
        check(bytes, gap);
        check(units, gap);
        check(points, gap);
        bytes[below(static_cast<unsigned int>(bytes.size()))] =
            static_cast<unsigned char>(0x80 + below(0x80));
        units[below(static_cast<unsigned int>(units.size()))] =
            static_cast<unsigned short>(0xD800 + below(0x800));
        points[below(static_cast<unsigned int>(points.size()))] =
            static_cast<wchar_t>(0xD800 + below(0x800));
        check(bytes, gap);
        check(units, gap);
        check(points, gap);
    }
}

TEST_P(UnicodeKernels, ConvertRandomBytes) {
    std::mt19937 random(12);
    for (int round = 0; round < 20000; ++round) {
        std::vector<unsigned char> bytes(random() % 200);
        for (unsigned char& byte : bytes)
            byte = static_cast<unsigned char>(random() % 4 ? random() : 0x80 + random() % 0x40);
        check(bytes);
    }
}

std::vector<cpu_form> forms_of_this_processor() {
    std::vector<cpu_form> forms;
    for (const cpu_form form :
         {cpu_form::portable, cpu_form::sse2, cpu_form::avx2, cpu_form::avx512})
        if (form <= tova::detail::best_cpu_level())
            forms.push_back(form);
    return forms;
}

std::string form_name(const ::testing::TestParamInfo<cpu_form>& info) {
    const char* const names[] = {"portable", "sse2", "avx2", "avx512"};
    return names[static_cast<int>(info.param)];
}

INSTANTIATE_TEST_SUITE_P(Form, UnicodeKernels, ::testing::ValuesIn(forms_of_this_processor()),
                         form_name);

TEST(UnicodeForms, AreChosenByTheLevel) {
    EXPECT_EQ(&kernels::unicode_portable, &kernels::unicode(cpu_form::portable));
    for (const cpu_form form : forms_of_this_processor()) {
        tova::detail::force_cpu_level(form);
        EXPECT_EQ(&kernels::unicode(form), &kernels::unicode());
    }
    tova::detail::force_cpu_level(tova::detail::best_cpu_level());
}

}  // namespace
