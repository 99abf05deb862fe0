#include <tova/types/absolute_unit.hpp>

#include "types/truncate.hpp"

#include <cmath>

// Contract: the conversions are evaluated from left to right as written, and each step is rounded
// to a double. Lengths that are stored and read back depend on the last bit, so this file is
// compiled without fused operations and without reordering (src/types/CMakeLists.txt).

namespace TOVA_2_18 {
namespace types {

namespace {

// Converts a length from md to a unit. 0 for a type that is not a unit: subclasses may use any
// value.
double length_of(double md, absolute_unit::unit_types unit) {
    switch (unit) {
    case absolute_unit::md:
        return md;
    case absolute_unit::dot_300:
        return md * 300.0 / 100000.0;
    case absolute_unit::millimetre:
        return md * 25.4 / 100000.0;
    case absolute_unit::centimetre:
        return md * 2.54 / 100000.0;
    case absolute_unit::inch:
        return md / 100000.0;
    case absolute_unit::point:
        return md * 72.0 / 100000.0;
    case absolute_unit::pica:
        return md * 6.0 / 100000.0;
    case absolute_unit::pixel_96:
        return md * 96.0 / 100000.0;
    }
    return 0.0;
}

// The inverse of length_of, up to rounding.
double md_of(double length, absolute_unit::unit_types unit) {
    switch (unit) {
    case absolute_unit::md:
        return length;
    case absolute_unit::dot_300:
        return length * 100000.0 / 300.0;
    case absolute_unit::millimetre:
        return length * 100000.0 / 25.4;
    case absolute_unit::centimetre:
        return length * 100000.0 / 2.54;
    case absolute_unit::inch:
        return length * 100000.0;
    case absolute_unit::point:
        return length * 100000.0 / 72.0;
    case absolute_unit::pica:
        return length * 100000.0 / 6.0;
    case absolute_unit::pixel_96:
        return length * 100000.0 / 96.0;
    }
    return 0.0;
}

}  // namespace

absolute_unit::absolute_unit() : m_value(0.0) {}

absolute_unit::absolute_unit(const absolute_unit& source) : m_value(source.m_value) {}

absolute_unit::absolute_unit(int value) : m_value(value) {}

// Contract: the fraction is dropped, as if an int were passed. `value(double)` keeps it.
absolute_unit::absolute_unit(double value) : m_value(detail::truncate<int>(value)) {}

absolute_unit& absolute_unit::operator=(const absolute_unit& source) {
    m_value = source.m_value;
    return *this;
}

absolute_unit::unit_types absolute_unit::type() const {
    return do_type();
}

int absolute_unit::as_int32() const {
    return do_as_int32();
}

double absolute_unit::as_double() const {
    return do_as_double();
}

int absolute_unit::as_md() const {
    return detail::truncate<int>(m_value);
}

double absolute_unit::value() const {
    return length_of(m_value, type());
}

double absolute_unit::value(double length) {
    m_value = md_of(length, type());
    return length;
}

template <int N>
basic_absolute_impl<N>::basic_absolute_impl() {}

template <int N>
basic_absolute_impl<N>::basic_absolute_impl(double length) {
    value(length);
}

template <int N>
basic_absolute_impl<N>::basic_absolute_impl(const absolute_unit& source) : absolute_unit(source) {}

template <int N>
absolute_unit::unit_types basic_absolute_impl<N>::do_type() const {
    return static_cast<unit_types>(N);
}

template <int N>
int basic_absolute_impl<N>::do_as_int32() const {
    return detail::truncate<int>(std::floor(value() + 0.5));
}

template <int N>
double basic_absolute_impl<N>::do_as_double() const {
    return std::floor(value() * 100.0 + 0.5) / 100.0;
}

// One for each unit of absolute_unit::unit_types.
template class basic_absolute_impl<1>;
template class basic_absolute_impl<2>;
template class basic_absolute_impl<3>;
template class basic_absolute_impl<4>;
template class basic_absolute_impl<5>;
template class basic_absolute_impl<6>;
template class basic_absolute_impl<7>;
template class basic_absolute_impl<8>;

}  // namespace types
}  // namespace TOVA_2_18
