// Lengths on paper and on a screen, and colors in one word.

#include <iostream>
#include <string>

#include <tova/tova.hpp>

using tova::types::absolute_unit;
using tova::types::basic_absolute_impl;
using tova::types::color_t;

namespace convert = tova::generic::convert;

namespace {

using centimetres = basic_absolute_impl<absolute_unit::centimetre>;
using inches = basic_absolute_impl<absolute_unit::inch>;
using points = basic_absolute_impl<absolute_unit::point>;

void measure_a_page() {
    const centimetres width(21.0);
    std::cout << "A4 is " << width.value() << " cm wide\n"
              << "  " << inches(width).as_double() << " inches\n"
              << "  " << points(width).as_int32() << " points\n"
              << "  " << convert::to_device_unit(width, 96).as_int32() << " pixels at 96 dpi\n"
              << "  " << convert::to_device_unit(width, 300).as_int32() << " dots at 300 dpi\n";

    // From pixels back to a length: give a `double`, whole numbers keep whole inches only.
    const inches shown = convert::to_md(794.0, tova::types::device_unit::device, 96);
    std::cout << "794 pixels are " << shown.as_double() << " inches\n";
}

void mix_a_color() {
    color_t orange(255, 165, 0);
    std::cout << "orange is 0x" << std::hex << std::uppercase << orange.as_int32() << std::dec
              << ", alpha " << static_cast<int>(orange.alpha()) << '\n';
    orange.alpha(128);
    const color_t same = color_t::rgba(orange.as_int32());
    std::cout << "half transparent and back from its word: " << (same == orange ? "equal" : "other")
              << ", green " << static_cast<int>(same.green()) << '\n';
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: units\n\n"
                     "Converts lengths between paper and devices, and takes a color apart.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    measure_a_page();
    mix_a_color();
}
