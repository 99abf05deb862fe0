#include <tova/generic/convert/binary.hpp>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace {

namespace convert = TOVA_2_18::generic::convert;
namespace little_endian = convert::little_endian;
namespace big_endian = convert::big_endian;

// The bytes of a literal, embedded NULs kept.
template <std::size_t Size>
std::string bytes(const char (&literal)[Size]) {
    return std::string(literal, Size - 1);
}

// --- HostOrder ------------------------------------------------------------

TEST(BytesHostOrder, CarryInt16) {
    const struct {
        short value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00")},  {1, bytes("\x01\x00")},      {0x0102, bytes("\x02\x01")},
        {-2, bytes("\xFE\xFF")}, {-32768, bytes("\x00\x80")}, {32767, bytes("\xFF\x7F")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, convert::int16_to_bin_str(c.value));
        EXPECT_EQ(c.value, convert::bin_str_to_int16(c.text.data()));
        EXPECT_EQ(c.value, convert::bin_str_to_int16(c.text));
        EXPECT_EQ(c.value, convert::bin_str_to_int16(c.text + "more"));
    }
}

TEST(BytesHostOrder, CarryInt32) {
    const struct {
        int value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00\x00\x00")},
        {1, bytes("\x01\x00\x00\x00")},
        {0x01020304, bytes("\x04\x03\x02\x01")},
        {-2, bytes("\xFE\xFF\xFF\xFF")},
        {-2147483647 - 1, bytes("\x00\x00\x00\x80")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, convert::int32_to_bin_str(c.value));
        EXPECT_EQ(c.value, convert::bin_str_to_int32(c.text.data()));
        EXPECT_EQ(c.value, convert::bin_str_to_int32(c.text));
        EXPECT_EQ(c.value, convert::bin_str_to_int32(c.text + "more"));
    }
}

TEST(BytesHostOrder, CarryInt64) {
    const struct {
        long value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00\x00\x00\x00\x00\x00\x00")},
        {1, bytes("\x01\x00\x00\x00\x00\x00\x00\x00")},
        {0x0102030405060708, bytes("\x08\x07\x06\x05\x04\x03\x02\x01")},
        {-2, bytes("\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF")},
        {-9223372036854775807 - 1, bytes("\x00\x00\x00\x00\x00\x00\x00\x80")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, convert::int64_to_bin_str(c.value));
        EXPECT_EQ(c.value, convert::bin_str_to_int64(c.text.data()));
        EXPECT_EQ(c.value, convert::bin_str_to_int64(c.text));
        EXPECT_EQ(c.value, convert::bin_str_to_int64(c.text + "more"));
    }
}

TEST(BytesHostOrder, CarryUint16) {
    const struct {
        unsigned short value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00")},
        {0x0102, bytes("\x02\x01")},
        {65535, bytes("\xFF\xFF")},
        {0x8000, bytes("\x00\x80")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, convert::uint16_to_bin_str(c.value));
        EXPECT_EQ(c.value, convert::bin_str_to_uint16(c.text.data()));
        EXPECT_EQ(c.value, convert::bin_str_to_uint16(c.text));
        EXPECT_EQ(c.value, convert::bin_str_to_uint16(c.text + "more"));
    }
}

TEST(BytesHostOrder, CarryUint32) {
    const struct {
        unsigned int value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00\x00\x00")},
        {0x01020304, bytes("\x04\x03\x02\x01")},
        {0xFFFFFFFEu, bytes("\xFE\xFF\xFF\xFF")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, convert::uint32_to_bin_str(c.value));
        EXPECT_EQ(c.value, convert::bin_str_to_uint32(c.text.data()));
        EXPECT_EQ(c.value, convert::bin_str_to_uint32(c.text));
        EXPECT_EQ(c.value, convert::bin_str_to_uint32(c.text + "more"));
    }
}

TEST(BytesHostOrder, CarryUint64) {
    const struct {
        unsigned long value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00\x00\x00\x00\x00\x00\x00")},
        {0x0102030405060708, bytes("\x08\x07\x06\x05\x04\x03\x02\x01")},
        {0xFFFFFFFFFFFFFFFEul, bytes("\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, convert::uint64_to_bin_str(c.value));
        EXPECT_EQ(c.value, convert::bin_str_to_uint64(c.text.data()));
        EXPECT_EQ(c.value, convert::bin_str_to_uint64(c.text));
        EXPECT_EQ(c.value, convert::bin_str_to_uint64(c.text + "more"));
    }
}

TEST(BytesHostOrder, CarryFloat) {
    const struct {
        float value;
        std::string text;
    } cases[] = {
        {0.0f, bytes("\x00\x00\x00\x00")},
        {1.0f, bytes("\x00\x00\x80\x3F")},
        {-1.5f, bytes("\x00\x00\xC0\xBF")},
        {16777217.0f, bytes("\x00\x00\x80\x4B")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, convert::float_to_bin_str(c.value));
        EXPECT_EQ(c.value, convert::bin_str_to_float(c.text.data()));
    }
}

TEST(BytesHostOrder, CarryDouble) {
    const struct {
        double value;
        std::string text;
    } cases[] = {
        {0.0, bytes("\x00\x00\x00\x00\x00\x00\x00\x00")},
        {1.0, bytes("\x00\x00\x00\x00\x00\x00\xF0\x3F")},
        {-1.5, bytes("\x00\x00\x00\x00\x00\x00\xF8\xBF")},
        {0.1, bytes("\x9A\x99\x99\x99\x99\x99\xB9\x3F")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, convert::double_to_bin_str(c.value));
        EXPECT_EQ(c.value, convert::bin_str_to_double(c.text.data()));
        EXPECT_EQ(c.value, convert::bin_str_to_double(c.text));
        EXPECT_EQ(c.value, convert::bin_str_to_double(c.text + "more"));
    }
}

TEST(BytesHostOrder, GiveZeroForAStringBelowTheSize) {
    const std::string ones(8, '\x01');
    for (unsigned size = 0; size < 2; ++size)
        EXPECT_EQ(0, convert::bin_str_to_int16(ones.substr(0, size))) << size;
    EXPECT_NE(0, convert::bin_str_to_int16(ones.substr(0, 2)));
    for (unsigned size = 0; size < 4; ++size)
        EXPECT_EQ(0, convert::bin_str_to_int32(ones.substr(0, size))) << size;
    EXPECT_NE(0, convert::bin_str_to_int32(ones.substr(0, 4)));
    for (unsigned size = 0; size < 8; ++size)
        EXPECT_EQ(0, convert::bin_str_to_int64(ones.substr(0, size))) << size;
    EXPECT_NE(0, convert::bin_str_to_int64(ones.substr(0, 8)));
    for (unsigned size = 0; size < 2; ++size)
        EXPECT_EQ(0, convert::bin_str_to_uint16(ones.substr(0, size))) << size;
    EXPECT_NE(0, convert::bin_str_to_uint16(ones.substr(0, 2)));
    for (unsigned size = 0; size < 4; ++size)
        EXPECT_EQ(0, convert::bin_str_to_uint32(ones.substr(0, size))) << size;
    EXPECT_NE(0, convert::bin_str_to_uint32(ones.substr(0, 4)));
    for (unsigned size = 0; size < 8; ++size)
        EXPECT_EQ(0, convert::bin_str_to_uint64(ones.substr(0, size))) << size;
    EXPECT_NE(0, convert::bin_str_to_uint64(ones.substr(0, 8)));
}

// --- LittleEndian ------------------------------------------------------------

TEST(BytesLittleEndian, CarryInt16) {
    const struct {
        short value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00")},  {1, bytes("\x00\x01")},      {0x0102, bytes("\x01\x02")},
        {-2, bytes("\xFF\xFE")}, {-32768, bytes("\x80\x00")}, {32767, bytes("\x7F\xFF")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, little_endian::int16_to_bin_str(c.value));
        EXPECT_EQ(c.value, little_endian::bin_str_to_int16(c.text));
        EXPECT_EQ(c.value, little_endian::bin_str_to_int16(c.text + "more"));
    }
}

TEST(BytesLittleEndian, CarryInt32) {
    const struct {
        int value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00\x00\x00")},
        {1, bytes("\x00\x00\x00\x01")},
        {0x01020304, bytes("\x01\x02\x03\x04")},
        {-2, bytes("\xFF\xFF\xFF\xFE")},
        {-2147483647 - 1, bytes("\x80\x00\x00\x00")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, little_endian::int32_to_bin_str(c.value));
        EXPECT_EQ(c.value, little_endian::bin_str_to_int32(c.text.data()));
        EXPECT_EQ(c.value, little_endian::bin_str_to_int32(c.text));
        EXPECT_EQ(c.value, little_endian::bin_str_to_int32(c.text + "more"));
    }
}

TEST(BytesLittleEndian, CarryInt64) {
    const struct {
        long value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00\x00\x00\x00\x00\x00\x00")},
        {1, bytes("\x00\x00\x00\x00\x00\x00\x00\x01")},
        {0x0102030405060708, bytes("\x01\x02\x03\x04\x05\x06\x07\x08")},
        {-2, bytes("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE")},
        {-9223372036854775807 - 1, bytes("\x80\x00\x00\x00\x00\x00\x00\x00")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, little_endian::int64_to_bin_str(c.value));
        EXPECT_EQ(c.value, little_endian::bin_str_to_int64(c.text.data()));
        EXPECT_EQ(c.value, little_endian::bin_str_to_int64(c.text));
        EXPECT_EQ(c.value, little_endian::bin_str_to_int64(c.text + "more"));
    }
}

TEST(BytesLittleEndian, CarryUint16) {
    const struct {
        unsigned short value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00")},
        {0x0102, bytes("\x01\x02")},
        {65535, bytes("\xFF\xFF")},
        {0x8000, bytes("\x80\x00")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, little_endian::uint16_to_bin_str(c.value));
        EXPECT_EQ(c.value, little_endian::bin_str_to_uint16(c.text.data()));
        EXPECT_EQ(c.value, little_endian::bin_str_to_uint16(c.text));
        EXPECT_EQ(c.value, little_endian::bin_str_to_uint16(c.text + "more"));
    }
}

TEST(BytesLittleEndian, CarryUint32) {
    const struct {
        unsigned int value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00\x00\x00")},
        {0x01020304, bytes("\x01\x02\x03\x04")},
        {0xFFFFFFFEu, bytes("\xFF\xFF\xFF\xFE")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, little_endian::uint32_to_bin_str(c.value));
        EXPECT_EQ(c.value, little_endian::bin_str_to_uint32(c.text.data()));
        EXPECT_EQ(c.value, little_endian::bin_str_to_uint32(c.text));
        EXPECT_EQ(c.value, little_endian::bin_str_to_uint32(c.text + "more"));
    }
}

TEST(BytesLittleEndian, CarryUint64) {
    const struct {
        unsigned long value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00\x00\x00\x00\x00\x00\x00")},
        {0x0102030405060708, bytes("\x01\x02\x03\x04\x05\x06\x07\x08")},
        {0xFFFFFFFFFFFFFFFEul, bytes("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, little_endian::uint64_to_bin_str(c.value));
        EXPECT_EQ(c.value, little_endian::bin_str_to_uint64(c.text.data()));
        EXPECT_EQ(c.value, little_endian::bin_str_to_uint64(c.text));
        EXPECT_EQ(c.value, little_endian::bin_str_to_uint64(c.text + "more"));
    }
}

TEST(BytesLittleEndian, CarryFloat) {
    const struct {
        float value;
        std::string text;
    } cases[] = {
        {0.0f, bytes("\x00\x00\x00\x00")},
        {1.0f, bytes("\x3F\x80\x00\x00")},
        {-1.5f, bytes("\xBF\xC0\x00\x00")},
        {16777217.0f, bytes("\x4B\x80\x00\x00")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, little_endian::float_to_bin_str(c.value));
        EXPECT_EQ(c.value, little_endian::bin_str_to_float(c.text.data()));
        EXPECT_EQ(c.value, little_endian::bin_str_to_float(c.text));
        EXPECT_EQ(c.value, little_endian::bin_str_to_float(c.text + "more"));
    }
}

TEST(BytesLittleEndian, CarryDouble) {
    const struct {
        double value;
        std::string text;
    } cases[] = {
        {0.0, bytes("\x00\x00\x00\x00\x00\x00\x00\x00")},
        {1.0, bytes("\x3F\xF0\x00\x00\x00\x00\x00\x00")},
        {-1.5, bytes("\xBF\xF8\x00\x00\x00\x00\x00\x00")},
        {0.1, bytes("\x3F\xB9\x99\x99\x99\x99\x99\x9A")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, little_endian::double_to_bin_str(c.value));
        EXPECT_EQ(c.value, little_endian::bin_str_to_double(c.text.data()));
        EXPECT_EQ(c.value, little_endian::bin_str_to_double(c.text));
        EXPECT_EQ(c.value, little_endian::bin_str_to_double(c.text + "more"));
    }
}

TEST(BytesLittleEndian, GiveZeroForAStringBelowTheSize) {
    const std::string ones(8, '\x01');
    for (unsigned size = 0; size < 2; ++size)
        EXPECT_EQ(0, little_endian::bin_str_to_int16(ones.substr(0, size))) << size;
    EXPECT_NE(0, little_endian::bin_str_to_int16(ones.substr(0, 2)));
    for (unsigned size = 0; size < 4; ++size)
        EXPECT_EQ(0, little_endian::bin_str_to_int32(ones.substr(0, size))) << size;
    EXPECT_NE(0, little_endian::bin_str_to_int32(ones.substr(0, 4)));
    for (unsigned size = 0; size < 8; ++size)
        EXPECT_EQ(0, little_endian::bin_str_to_int64(ones.substr(0, size))) << size;
    EXPECT_NE(0, little_endian::bin_str_to_int64(ones.substr(0, 8)));
    for (unsigned size = 0; size < 2; ++size)
        EXPECT_EQ(0, little_endian::bin_str_to_uint16(ones.substr(0, size))) << size;
    EXPECT_NE(0, little_endian::bin_str_to_uint16(ones.substr(0, 2)));
    for (unsigned size = 0; size < 4; ++size)
        EXPECT_EQ(0, little_endian::bin_str_to_uint32(ones.substr(0, size))) << size;
    EXPECT_NE(0, little_endian::bin_str_to_uint32(ones.substr(0, 4)));
    for (unsigned size = 0; size < 8; ++size)
        EXPECT_EQ(0, little_endian::bin_str_to_uint64(ones.substr(0, size))) << size;
    EXPECT_NE(0, little_endian::bin_str_to_uint64(ones.substr(0, 8)));
    for (unsigned size = 0; size < 4; ++size)
        EXPECT_EQ(0, little_endian::bin_str_to_float(ones.substr(0, size))) << size;
    EXPECT_NE(0, little_endian::bin_str_to_float(ones.substr(0, 4)));
    for (unsigned size = 0; size < 8; ++size)
        EXPECT_EQ(0, little_endian::bin_str_to_double(ones.substr(0, size))) << size;
    EXPECT_NE(0, little_endian::bin_str_to_double(ones.substr(0, 8)));
}

// --- BigEndian ------------------------------------------------------------

TEST(BytesBigEndian, CarryInt16) {
    const struct {
        short value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00")},  {1, bytes("\x00\x01")},      {0x0102, bytes("\x01\x02")},
        {-2, bytes("\xFF\xFE")}, {-32768, bytes("\x80\x00")}, {32767, bytes("\x7F\xFF")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, big_endian::int16_to_bin_str(c.value));
        EXPECT_EQ(c.value, big_endian::bin_str_to_int16(c.text.data()));
        EXPECT_EQ(c.value, big_endian::bin_str_to_int16(c.text));
        EXPECT_EQ(c.value, big_endian::bin_str_to_int16(c.text + "more"));
    }
}

TEST(BytesBigEndian, CarryInt32) {
    const struct {
        int value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00\x00\x00")},
        {1, bytes("\x00\x00\x00\x01")},
        {0x01020304, bytes("\x01\x02\x03\x04")},
        {-2, bytes("\xFF\xFF\xFF\xFE")},
        {-2147483647 - 1, bytes("\x80\x00\x00\x00")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, big_endian::int32_to_bin_str(c.value));
        EXPECT_EQ(c.value, big_endian::bin_str_to_int32(c.text.data()));
        EXPECT_EQ(c.value, big_endian::bin_str_to_int32(c.text));
        EXPECT_EQ(c.value, big_endian::bin_str_to_int32(c.text + "more"));
    }
}

TEST(BytesBigEndian, CarryInt64) {
    const struct {
        long value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00\x00\x00\x00\x00\x00\x00")},
        {1, bytes("\x00\x00\x00\x00\x00\x00\x00\x01")},
        {0x0102030405060708, bytes("\x01\x02\x03\x04\x05\x06\x07\x08")},
        {-2, bytes("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE")},
        {-9223372036854775807 - 1, bytes("\x80\x00\x00\x00\x00\x00\x00\x00")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, big_endian::int64_to_bin_str(c.value));
        EXPECT_EQ(c.value, big_endian::bin_str_to_int64(c.text.data()));
        EXPECT_EQ(c.value, big_endian::bin_str_to_int64(c.text));
        EXPECT_EQ(c.value, big_endian::bin_str_to_int64(c.text + "more"));
    }
}

TEST(BytesBigEndian, CarryUint16) {
    const struct {
        unsigned short value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00")},
        {0x0102, bytes("\x01\x02")},
        {65535, bytes("\xFF\xFF")},
        {0x8000, bytes("\x80\x00")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, big_endian::uint16_to_bin_str(c.value));
        EXPECT_EQ(c.value, big_endian::bin_str_to_uint16(c.text.data()));
    }
}

TEST(BytesBigEndian, CarryUint32) {
    const struct {
        unsigned int value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00\x00\x00")},
        {0x01020304, bytes("\x01\x02\x03\x04")},
        {0xFFFFFFFEu, bytes("\xFF\xFF\xFF\xFE")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, big_endian::uint32_to_bin_str(c.value));
        EXPECT_EQ(c.value, big_endian::bin_str_to_uint32(c.text.data()));
        EXPECT_EQ(c.value, big_endian::bin_str_to_uint32(c.text));
        EXPECT_EQ(c.value, big_endian::bin_str_to_uint32(c.text + "more"));
    }
}

TEST(BytesBigEndian, CarryUint64) {
    const struct {
        unsigned long value;
        std::string text;
    } cases[] = {
        {0, bytes("\x00\x00\x00\x00\x00\x00\x00\x00")},
        {0x0102030405060708, bytes("\x01\x02\x03\x04\x05\x06\x07\x08")},
        {0xFFFFFFFFFFFFFFFEul, bytes("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, big_endian::uint64_to_bin_str(c.value));
        EXPECT_EQ(c.value, big_endian::bin_str_to_uint64(c.text.data()));
        EXPECT_EQ(c.value, big_endian::bin_str_to_uint64(c.text));
        EXPECT_EQ(c.value, big_endian::bin_str_to_uint64(c.text + "more"));
    }
}

TEST(BytesBigEndian, CarryFloat) {
    const struct {
        float value;
        std::string text;
    } cases[] = {
        {0.0f, bytes("\x00\x00\x00\x00")},
        {1.0f, bytes("\x3F\x80\x00\x00")},
        {-1.5f, bytes("\xBF\xC0\x00\x00")},
        {16777217.0f, bytes("\x4B\x80\x00\x00")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, big_endian::float_to_bin_str(c.value));
    }
}

TEST(BytesBigEndian, CarryDouble) {
    const struct {
        double value;
        std::string text;
    } cases[] = {
        {0.0, bytes("\x00\x00\x00\x00\x00\x00\x00\x00")},
        {1.0, bytes("\x3F\xF0\x00\x00\x00\x00\x00\x00")},
        {-1.5, bytes("\xBF\xF8\x00\x00\x00\x00\x00\x00")},
        {0.1, bytes("\x3F\xB9\x99\x99\x99\x99\x99\x9A")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.text, big_endian::double_to_bin_str(c.value));
        EXPECT_EQ(c.value, big_endian::bin_str_to_double(c.text.data()));
    }
}

TEST(BytesBigEndian, GiveZeroForAStringBelowTheSize) {
    const std::string ones(8, '\x01');
    for (unsigned size = 0; size < 2; ++size)
        EXPECT_EQ(0, big_endian::bin_str_to_int16(ones.substr(0, size))) << size;
    EXPECT_NE(0, big_endian::bin_str_to_int16(ones.substr(0, 2)));
    for (unsigned size = 0; size < 4; ++size)
        EXPECT_EQ(0, big_endian::bin_str_to_int32(ones.substr(0, size))) << size;
    EXPECT_NE(0, big_endian::bin_str_to_int32(ones.substr(0, 4)));
    for (unsigned size = 0; size < 8; ++size)
        EXPECT_EQ(0, big_endian::bin_str_to_int64(ones.substr(0, size))) << size;
    EXPECT_NE(0, big_endian::bin_str_to_int64(ones.substr(0, 8)));
    for (unsigned size = 0; size < 4; ++size)
        EXPECT_EQ(0, big_endian::bin_str_to_uint32(ones.substr(0, size))) << size;
    EXPECT_NE(0, big_endian::bin_str_to_uint32(ones.substr(0, 4)));
    for (unsigned size = 0; size < 8; ++size)
        EXPECT_EQ(0, big_endian::bin_str_to_uint64(ones.substr(0, size))) << size;
    EXPECT_NE(0, big_endian::bin_str_to_uint64(ones.substr(0, 8)));
}

// --- What the names do not say -----------------------------------------------------------------

TEST(BytesHostOrder, ReadAFloatStringFromEightBytesOnOnly) {
    const std::string one = convert::float_to_bin_str(1.0f);
    EXPECT_EQ(4u, one.size());
    EXPECT_EQ(0.0f, convert::bin_str_to_float(one));
    EXPECT_EQ(1.0f, convert::bin_str_to_float(one.data()));
    EXPECT_EQ(0.0f, convert::bin_str_to_float(one + "abc"));
    EXPECT_EQ(1.0f, convert::bin_str_to_float(one + "abcd"));
}

TEST(BytesHostOrder, ReadADoubleStringFromFourBytesOnAndTakeMissingBytesForZero) {
    const std::string all = bytes("\x01\x02\x03\x04\x05\x06\x07\x40");
    for (unsigned size = 0; size < 4; ++size)
        EXPECT_EQ(0.0, convert::bin_str_to_double(all.substr(0, size))) << size;
    for (unsigned size = 4; size <= 8; ++size) {
        std::string padded = all.substr(0, size);
        padded.resize(8);
        EXPECT_EQ(convert::bin_str_to_double(padded.data()),
                  convert::bin_str_to_double(all.substr(0, size)))
            << size;
        EXPECT_NE(0.0, convert::bin_str_to_double(all.substr(0, size))) << size;
    }
    EXPECT_EQ(5e-324, convert::bin_str_to_double(bytes("\x01\x00\x00\x00")));
}

TEST(BytesOfNamedOrders, AreTheSameInBoth) {
    EXPECT_EQ(bytes("\x00\x00\x00\x01"), big_endian::int32_to_bin_str(1));
    EXPECT_EQ(bytes("\x00\x00\x00\x01"), little_endian::int32_to_bin_str(1));
    EXPECT_EQ(bytes("\x01\x00\x00\x00"), convert::int32_to_bin_str(1));
}

TEST(BytesOfFloatingNumbers, KeepEveryBitPattern) {
    const unsigned long patterns[] = {0x7FF8000000000001ul, 0xFFF0000000000000ul,
                                      0x8000000000000000ul, 0x0000000000000001ul};
    for (unsigned long pattern : patterns) {
        SCOPED_TRACE(pattern);
        double value;
        std::memcpy(&value, &pattern, sizeof value);
        const std::string text = convert::double_to_bin_str(value);
        EXPECT_EQ(convert::uint64_to_bin_str(pattern), text);
        for (const double back :
             {convert::bin_str_to_double(text), convert::bin_str_to_double(text.data()),
              little_endian::bin_str_to_double(little_endian::double_to_bin_str(value)),
              big_endian::bin_str_to_double(big_endian::double_to_bin_str(value).data())})
            EXPECT_EQ(0, std::memcmp(&pattern, &back, sizeof back));
    }
}

}  // namespace
