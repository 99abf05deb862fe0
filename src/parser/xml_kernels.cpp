#include "parser/xml_kernels.hpp"

#include "detail/cpu_features.hpp"

namespace TOVA_2_18 {
namespace parser {
namespace kernels {

namespace {

// One bit for each mask, in the order of `block_masks`.
enum : unsigned char {
    name = 1,
    white_space = 2,
    line_feed = 4,
    markup = 8,
    double_quote = 16,
    single_quote = 32,
    high = 64,
};

class class_table {
public:
    constexpr class_table() : m_classes() {
        for (int byte = 0; byte < 256; ++byte)
            m_classes[byte] = class_of(byte);
    }
    constexpr unsigned char operator[](unsigned char byte) const { return m_classes[byte]; }

private:
    static constexpr unsigned char class_of(int byte) {
        if ((byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
            (byte >= '0' && byte <= '9') || byte == '_')
            return name;
        switch (byte) {
        case '\n':
            return white_space | line_feed;
        case ' ':
        case '\t':
        case '\r':
            return white_space;
        case '<':
        case '&':
            return markup;
        case '"':
            return double_quote;
        case '\'':
            return single_quote;
        default:
            return byte < 0x80 ? 0 : high;
        }
    }

    unsigned char m_classes[256];
};

constexpr class_table classes;

// Collects the lowest bits of eight bytes. The products of the factor's bits with the bytes don't
// overlap, so nothing is carried.
std::uint64_t gather(std::uint64_t eight_classes, int shift) {
    return ((eight_classes >> shift & 0x0101010101010101u) * 0x0102040810204080u) >> 56;
}

}  // namespace

void classify_portable(const char* block, block_masks& masks) {
    masks = block_masks();
    for (std::size_t i = 0; i < block_size; i += 8) {
        std::uint64_t eight = 0;
        for (std::size_t k = 0; k < 8; ++k)
            eight |= std::uint64_t{classes[static_cast<unsigned char>(block[i + k])]} << 8 * k;
        masks.name |= gather(eight, 0) << i;
        masks.white_space |= gather(eight, 1) << i;
        masks.line_feed |= gather(eight, 2) << i;
        masks.markup |= gather(eight, 3) << i;
        masks.double_quote |= gather(eight, 4) << i;
        masks.single_quote |= gather(eight, 5) << i;
        masks.high |= gather(eight, 6) << i;
    }
}

classify_function classify() {
#if defined(__x86_64__)
    switch (detail::cpu_level()) {
    case detail::cpu_form::avx512:
        return classify_avx512;
    case detail::cpu_form::avx2:
        return classify_avx2;
    case detail::cpu_form::sse2:
        return classify_sse2;
    case detail::cpu_form::portable:
        break;
    }
#endif
    return classify_portable;
}

}  // namespace kernels
}  // namespace parser
}  // namespace TOVA_2_18
