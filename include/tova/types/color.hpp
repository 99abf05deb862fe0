/// @file
/// A color as four bytes in one 32-bit word.
///
///     const tova::types::color_t orange(255, 128, 0);  // opaque
///     orange.as_rgb();                                 // 0x0080FF: red is the lowest byte
///     orange.alpha();                                  // 255
///
/// Colors are plain values: reading one object from several threads is safe.
#pragma once

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace types {

/// A color in one 32-bit word: red, green, blue and alpha, 8 bits each.
///
/// The four bytes are stored in that order, so on little-endian hosts the word reads 0xAABBGGRR.
/// Alpha runs from 0 (transparent) to 255 (opaque). A plain value of 4 bytes: copies share nothing.
/// Never fails.
class TOVA_API color_t {
public:
    /// Transparent black. Black on screen is `color_t(0, 0, 0)`.
    color_t();

    color_t(const color_t& source);

    /// A color from its word, alpha included.
    color_t(int word);

    /// A color from its bytes; opaque without alpha.
    color_t(unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha);
    color_t(unsigned char red, unsigned char green, unsigned char blue);
    ~color_t() TOVA_NOTHROW;

    /// A color from its word.
    ///
    /// Contract: `rgb(word)` takes alpha from the top byte, exactly as `rgba(word)` does. Words
    /// are read back under either name, and `rgb(c.as_int32()) == c` holds for every color.
    static color_t rgba(const int& word);
    static color_t rgb(const int& word);

    /// A color from its bytes; opaque without alpha.
    static color_t rgba(unsigned char red, unsigned char green, unsigned char blue,
                        unsigned char alpha);
    static color_t rgb(unsigned char red, unsigned char green, unsigned char blue);

    /// Copies a color, or sets one from its word. Returns the object.
    color_t& assign(const color_t& source);
    color_t& operator=(const color_t& source);
    color_t& assign(int word);
    color_t& operator=(int word);

    /// Whether all four bytes are the same; `!=` is the opposite.
    bool equal(const color_t& other) const;
    bool operator==(const color_t& other) const;
    bool operator!=(const color_t& other) const;

    /// The value of one byte. Each getter exists in a const and a non-const form.
    unsigned char red();
    unsigned char green();
    unsigned char blue();
    unsigned char alpha();
    unsigned char red() const;
    unsigned char green() const;
    unsigned char blue() const;
    unsigned char alpha() const;

    /// Sets one byte and returns the value given.
    unsigned char red(unsigned char value);
    unsigned char green(unsigned char value);
    unsigned char blue(unsigned char value);
    unsigned char alpha(unsigned char value);

    int as_int32() const;  ///< The color as its word.
    int as_rgb() const;    ///< The color as its word, with 0 in place of alpha.

private:
    unsigned char m_red;
    unsigned char m_green;
    unsigned char m_blue;
    unsigned char m_alpha;
};

}  // namespace types
}  // namespace TOVA_2_18
