#include <tova/types/color.hpp>

#include <gtest/gtest.h>

namespace {

using tova::types::color_t;

void expect_parts(const color_t& color, int red, int green, int blue, int alpha) {
    EXPECT_EQ(red, color.red());
    EXPECT_EQ(green, color.green());
    EXPECT_EQ(blue, color.blue());
    EXPECT_EQ(alpha, color.alpha());
    color_t changeable(color);
    EXPECT_EQ(red, changeable.red());
    EXPECT_EQ(green, changeable.green());
    EXPECT_EQ(blue, changeable.blue());
    EXPECT_EQ(alpha, changeable.alpha());
}

TEST(Color, IsTransparentBlackByDefault) {
    expect_parts(color_t(), 0, 0, 0, 0);
    EXPECT_EQ(0, color_t().as_int32());
}

TEST(Color, IsMadeFromItsBytes) {
    expect_parts(color_t(1, 2, 3, 4), 1, 2, 3, 4);
    expect_parts(color_t::rgba(1, 2, 3, 4), 1, 2, 3, 4);
}

TEST(Color, IsOpaqueWithoutAnAlphaByte) {
    expect_parts(color_t(10, 20, 30), 10, 20, 30, 255);
    expect_parts(color_t::rgb(10, 20, 30), 10, 20, 30, 255);
    EXPECT_EQ(0x001E140A, color_t(10, 20, 30).as_rgb());
    EXPECT_EQ(static_cast<int>(0xFF1E140Au), color_t(10, 20, 30).as_int32());
}

TEST(Color, HasRedInTheLowestAndAlphaInTheTopByteOfItsWord) {
    expect_parts(color_t(0x11223344), 0x44, 0x33, 0x22, 0x11);
    expect_parts(color_t::rgba(0x11223344), 0x44, 0x33, 0x22, 0x11);
    expect_parts(color_t(-2), 0xFE, 0xFF, 0xFF, 0xFF);
    EXPECT_EQ(0x04030201, color_t(1, 2, 3, 4).as_int32());
}

TEST(Color, KeepsTheTopByteOfAWordAsAlphaUnderBothNames) {
    expect_parts(color_t::rgb(0x11223344), 0x44, 0x33, 0x22, 0x11);
    expect_parts(color_t::rgb(0x00223344), 0x44, 0x33, 0x22, 0x00);
}

TEST(Color, ReturnsItsWordWithAndWithoutAlpha) {
    for (int word : {0, 1, -1, 0x11223344, static_cast<int>(0x80000000u), 0x7FFFFFFF}) {
        SCOPED_TRACE(word);
        EXPECT_EQ(word, color_t(word).as_int32());
        EXPECT_EQ(word & 0xFFFFFF, color_t(word).as_rgb());
        EXPECT_TRUE(color_t::rgb(color_t(word).as_int32()) == color_t(word));
    }
}

TEST(Color, SetsEachByteAndReturnsIt) {
    color_t color;
    for (int value = 0; value < 256; ++value) {
        const unsigned char byte = static_cast<unsigned char>(value);
        EXPECT_EQ(value, color.red(byte));
        EXPECT_EQ(255 - value, color.green(static_cast<unsigned char>(255 - byte)));
        EXPECT_EQ(value ^ 1, color.blue(static_cast<unsigned char>(byte ^ 1)));
        EXPECT_EQ(value ^ 2, color.alpha(static_cast<unsigned char>(byte ^ 2)));
        expect_parts(color, value, 255 - value, value ^ 1, value ^ 2);
    }
}

TEST(Color, IsCopiedAndAssignedInEveryForm) {
    const color_t source(1, 2, 3, 4);
    expect_parts(color_t(source), 1, 2, 3, 4);
    color_t color;
    EXPECT_EQ(&color, &(color = source));
    expect_parts(color, 1, 2, 3, 4);
    EXPECT_EQ(&color, &(color = 0x11223344));
    expect_parts(color, 0x44, 0x33, 0x22, 0x11);
    EXPECT_EQ(&color, &color.assign(source));
    expect_parts(color, 1, 2, 3, 4);
    EXPECT_EQ(&color, &color.assign(0x11223344));
    expect_parts(color, 0x44, 0x33, 0x22, 0x11);
}

TEST(Color, IsEqualIfAllFourBytesAre) {
    const color_t color(1, 2, 3, 4);
    EXPECT_TRUE(color.equal(color_t(1, 2, 3, 4)));
    EXPECT_TRUE(color == color_t(1, 2, 3, 4));
    EXPECT_FALSE(color != color_t(1, 2, 3, 4));
    for (const color_t& other :
         {color_t(0, 2, 3, 4), color_t(1, 0, 3, 4), color_t(1, 2, 0, 4), color_t(1, 2, 3, 0)}) {
        EXPECT_FALSE(color.equal(other));
        EXPECT_FALSE(color == other);
        EXPECT_TRUE(color != other);
    }
}

}  // namespace
