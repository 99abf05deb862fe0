// The portable kernels: the reference for every vector form.
//
// All walk the source once. The UTF-8 decoders and the UTF-16 encoder take runs of ASCII a word at
// a time, because most strings are mostly ASCII; everything else goes through
// `detail::read_sequence` or `detail::read_units`, one character at a time.
#include "strings/unicode_kernels.hpp"

#include "strings/unicode_loops.hpp"

namespace TOVA_2_18 {
namespace strings {
namespace kernels {

namespace {

// Converts a whole source with one loop. The measured room is sufficient.
template <typename Source, typename Target,
          progress (*Loop)(const Source*, std::size_t, std::size_t, Target*)>
progress all(const Source* from, std::size_t size, Target* to, std::size_t) {
    return Loop(from, size, size, to);
}

}  // namespace

const unicode_form unicode_portable = {
    {loops::measure_8_to_16, all<unsigned char, unsigned short, loops::utf8_to_utf16>,
     loops::simple},
    {loops::measure_8_to_32, all<unsigned char, wchar_t, loops::utf8_to_utf32>, loops::simple},
    {loops::measure_16_to_8, all<unsigned short, char, loops::utf16_to_utf8>, loops::simple},
    {loops::measure_16_to_32, all<unsigned short, wchar_t, loops::utf16_to_utf32>, loops::simple},
    {loops::measure_32_to_8, all<wchar_t, char, loops::utf32_to_utf8>, loops::simple},
    {loops::measure_32_to_16, all<wchar_t, unsigned short, loops::utf32_to_utf16>, loops::simple},
};

}  // namespace kernels
}  // namespace strings
}  // namespace TOVA_2_18
