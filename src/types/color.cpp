#include <tova/types/color.hpp>

#include <cstring>

namespace TOVA_2_18 {
namespace types {

color_t::color_t() : m_red(0), m_green(0), m_blue(0), m_alpha(0) {}

color_t::color_t(const color_t& source)
    : m_red(source.m_red), m_green(source.m_green), m_blue(source.m_blue), m_alpha(source.m_alpha) {
}

color_t::color_t(int word) {
    assign(word);
}

color_t::color_t(unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha)
    : m_red(red), m_green(green), m_blue(blue), m_alpha(alpha) {}

color_t::color_t(unsigned char red, unsigned char green, unsigned char blue)
    : m_red(red), m_green(green), m_blue(blue), m_alpha(255) {}

// The copy constructor and the destructor are not trivial, so compilers pass a color by reference
// at machine level. Callers depend on that.
color_t::~color_t() TOVA_NOTHROW {}

color_t color_t::rgba(const int& word) {
    return color_t(word);
}

// Contract: the top byte is alpha, as in `rgba`. It isn't forced to 255.
color_t color_t::rgb(const int& word) {
    return color_t(word);
}

color_t color_t::rgba(unsigned char red, unsigned char green, unsigned char blue,
                      unsigned char alpha) {
    return color_t(red, green, blue, alpha);
}

color_t color_t::rgb(unsigned char red, unsigned char green, unsigned char blue) {
    return color_t(red, green, blue);
}

color_t& color_t::assign(const color_t& source) {
    m_red = source.m_red;
    m_green = source.m_green;
    m_blue = source.m_blue;
    m_alpha = source.m_alpha;
    return *this;
}

color_t& color_t::operator=(const color_t& source) {
    return assign(source);
}

// The word is the four bytes in memory order, so the byte order of the host determines where red
// is.
color_t& color_t::assign(int word) {
    unsigned char bytes[sizeof word];
    std::memcpy(bytes, &word, sizeof word);
    m_red = bytes[0];
    m_green = bytes[1];
    m_blue = bytes[2];
    m_alpha = bytes[3];
    return *this;
}

color_t& color_t::operator=(int word) {
    return assign(word);
}

bool color_t::equal(const color_t& other) const {
    return m_red == other.m_red && m_green == other.m_green && m_blue == other.m_blue &&
           m_alpha == other.m_alpha;
}

bool color_t::operator==(const color_t& other) const {
    return equal(other);
}

bool color_t::operator!=(const color_t& other) const {
    return !equal(other);
}

unsigned char color_t::red() {
    return m_red;
}

unsigned char color_t::green() {
    return m_green;
}

unsigned char color_t::blue() {
    return m_blue;
}

unsigned char color_t::alpha() {
    return m_alpha;
}

unsigned char color_t::red() const {
    return m_red;
}

unsigned char color_t::green() const {
    return m_green;
}

unsigned char color_t::blue() const {
    return m_blue;
}

unsigned char color_t::alpha() const {
    return m_alpha;
}

unsigned char color_t::red(unsigned char value) {
    return m_red = value;
}

unsigned char color_t::green(unsigned char value) {
    return m_green = value;
}

unsigned char color_t::blue(unsigned char value) {
    return m_blue = value;
}

unsigned char color_t::alpha(unsigned char value) {
    return m_alpha = value;
}

int color_t::as_int32() const {
    const unsigned char bytes[] = {m_red, m_green, m_blue, m_alpha};
    int word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

int color_t::as_rgb() const {
    return as_int32() & 0xffffff;
}

}  // namespace types
}  // namespace TOVA_2_18
