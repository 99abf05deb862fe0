#include <tova/generic/convert/units.hpp>

namespace TOVA_2_18 {
namespace generic {
namespace convert {

namespace {

using types::absolute_unit;
using types::basic_absolute_impl;
using types::device_unit;

typedef basic_absolute_impl<absolute_unit::md> md_length;

const int md_per_inch = 100000;

// Contract: the product has 32 bits and wraps.
int wrapping_product(int left, int right) {
    return static_cast<int>(static_cast<unsigned>(left) * static_cast<unsigned>(right));
}

// Contract: the division comes first, so only whole inches remain. It is done in 64 bits because
// the quotient of the smallest length at -1 dpi doesn't fit into 32; there it wraps like the
// product.
int md_of_whole_inches(int units, int dpi) {
    const long inches = static_cast<long>(units) / dpi;
    return wrapping_product(static_cast<int>(inches), md_per_inch);
}

md_length length_in(double length, absolute_unit::unit_types type) {
    switch (type) {
    case absolute_unit::md:
        break;
    case absolute_unit::dot_300:
        return basic_absolute_impl<absolute_unit::dot_300>(length);
    case absolute_unit::millimetre:
        return basic_absolute_impl<absolute_unit::millimetre>(length);
    case absolute_unit::centimetre:
        return basic_absolute_impl<absolute_unit::centimetre>(length);
    case absolute_unit::inch:
        return basic_absolute_impl<absolute_unit::inch>(length);
    case absolute_unit::point:
        return basic_absolute_impl<absolute_unit::point>(length);
    case absolute_unit::pica:
        return basic_absolute_impl<absolute_unit::pica>(length);
    case absolute_unit::pixel_96:
        return basic_absolute_impl<absolute_unit::pixel_96>(length);
    }
    return md_length(length);
}

}  // namespace

device_unit to_device_unit(const device_unit& length) {
    return length;
}

device_unit to_device_unit(double length, device_unit::unit_types) {
    return device_unit(length);
}

device_unit to_device_unit(int length, device_unit::unit_types) {
    return device_unit(length);
}

// Contract: the product wraps before the division, so the result of a long length has the sign of
// the wrapped product.
device_unit to_device_unit(const absolute_unit& length, int dpi) {
    return device_unit(wrapping_product(length.as_md(), dpi) / md_per_inch);
}

device_unit to_device_unit(double length, absolute_unit::unit_types type, int dpi) {
    return to_device_unit(length_in(length, type), dpi);
}

device_unit to_device_unit(int length, absolute_unit::unit_types type, int dpi) {
    return to_device_unit(static_cast<double>(length), type, dpi);
}

md_length to_md(const absolute_unit& length) {
    return md_length(length);
}

md_length to_md(const int& length, absolute_unit::unit_types type) {
    return to_md(static_cast<double>(length), type);
}

md_length to_md(const double& length, absolute_unit::unit_types type) {
    return length_in(length, type);
}

md_length to_md(const device_unit& length, int dpi) {
    return md_length(md_of_whole_inches(length.as_int32(), dpi));
}

md_length to_md(const int& length, device_unit::unit_types, int dpi) {
    return md_length(md_of_whole_inches(length, dpi));
}

md_length to_md(const double& length, device_unit::unit_types, int dpi) {
    return md_length(length / dpi * 100000.0);
}

}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
