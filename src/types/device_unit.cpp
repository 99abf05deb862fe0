#include <tova/types/device_unit.hpp>

#include "types/truncate.hpp"

namespace TOVA_2_18 {
namespace types {

device_unit::device_unit() : m_value(0) {}

device_unit::device_unit(const device_unit& source) : m_value(source.m_value) {}

device_unit::device_unit(const int& value) : m_value(value) {}

device_unit::device_unit(const double& value) : m_value(detail::truncate<int>(value)) {}

device_unit::device_unit(const float& value) : m_value(detail::truncate<int>(value)) {}

device_unit::device_unit(const signed char& value) : m_value(value) {}

device_unit::device_unit(const short& value) : m_value(value) {}

// Contract: a long keeps its low 32 bits, while a floating-point value out of range becomes the
// smallest int.
device_unit::device_unit(const long& value) : m_value(static_cast<int>(value)) {}

device_unit::device_unit(const unsigned char& value) : m_value(value) {}

device_unit::device_unit(const unsigned short& value) : m_value(value) {}

device_unit::device_unit(const unsigned long& value) : m_value(static_cast<int>(value)) {}

device_unit& device_unit::assign(int value) {
    m_value = value;
    return *this;
}

device_unit& device_unit::operator=(int value) {
    return assign(value);
}

device_unit& device_unit::assign(const device_unit& source) {
    m_value = source.m_value;
    return *this;
}

device_unit& device_unit::operator=(const device_unit& source) {
    return assign(source);
}

// Compares the fields: two units of different subclasses are equal if they store the same number.
bool device_unit::equal(const device_unit& other) const {
    return m_value == other.m_value;
}

bool device_unit::operator==(const device_unit& other) const {
    return equal(other);
}

bool device_unit::operator!=(const device_unit& other) const {
    return !equal(other);
}

device_unit::unit_types device_unit::type() const {
    return do_type();
}

int device_unit::as_int32() const {
    return do_as_int32();
}

float device_unit::as_float() const {
    return do_as_float();
}

double device_unit::as_double() const {
    return do_as_double();
}

device_unit::unit_types device_unit::do_type() const {
    return device;
}

int device_unit::do_as_int32() const {
    return m_value;
}

float device_unit::do_as_float() const {
    return static_cast<float>(m_value);
}

double device_unit::do_as_double() const {
    return m_value;
}

}  // namespace types
}  // namespace TOVA_2_18
