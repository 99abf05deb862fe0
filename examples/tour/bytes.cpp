// Numbers as bytes: a record with a fixed layout, written and read in a chosen byte order.

#include <iomanip>
#include <iostream>
#include <string>

#include <tova/tova.hpp>

namespace convert = tova::generic::convert;

namespace {

void print_bytes(const std::string& bytes) {
    std::cout << std::hex << std::setfill('0');
    for (const unsigned char byte : bytes)
        std::cout << std::setw(2) << static_cast<int>(byte) << ' ';
    std::cout << std::dec << '\n';
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: bytes\n\n"
                     "Writes numbers as bytes and reads them back.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    // The functions of `convert` itself put the least significant byte first.
    std::string record;
    record += convert::uint16_to_bin_str(0x1234);
    record += convert::int32_to_bin_str(-2);
    record += convert::double_to_bin_str(0.5);
    print_bytes(record);

    // A reader of `const char*` reads as many bytes as its type has.
    std::cout << convert::bin_str_to_uint16(record.data()) << ' '
              << convert::bin_str_to_int32(record.data() + 2) << ' '
              << convert::bin_str_to_double(record.data() + 6) << '\n';

    // Network order: the most significant byte first.
    const std::string network = convert::big_endian::uint32_to_bin_str(0x7F000001);
    print_bytes(network);
    std::cout << convert::big_endian::bin_str_to_uint32(network) << '\n';

    // A string that is too short reads as 0.
    std::cout << convert::bin_str_to_int64(std::string("short")) << '\n';
}
