// Numbers to and from the bytes of a string.
//
// Two byte orders exist: that of the host, which is little-endian, and the swapped one, with the
// most significant byte first. The four templates below, a writer and a reader for each order, do
// all the work. The 67 functions after them only select a type and an order:
//
//   generic::convert                host order
//   generic::convert::little_endian swapped
//   generic::convert::big_endian    swapped
//
// The published sets have gaps: some readers exist only for `const char*`, some only for `const
// std::string&`, and `big_endian` cannot read a `float`. Each function is written out because its
// name is a symbol of the shared object; one set can't be an alias of another.
#include <tova/generic/convert/binary.hpp>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace TOVA_2_18 {
namespace generic {
namespace convert {

namespace {

template <typename Value>
std::string host_bytes(const Value& value) {
    return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

template <typename Value>
Value from_host_bytes(const char* bytes) {
    Value value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

// Returns 0 for a string shorter than the limit. If the limit is below the size of the value,
// missing bytes count as 0, so nothing past the end of the string is read.
template <typename Value>
Value from_host_bytes(const std::string& bytes, std::size_t limit = sizeof(Value)) {
    if (bytes.size() < limit)
        return Value();
    char all[sizeof(Value)] = {};
    std::memcpy(all, bytes.data(), std::min(bytes.size(), sizeof all));
    return from_host_bytes<Value>(all);
}

template <typename Value>
std::string swapped_bytes(const Value& value) {
    std::string bytes = host_bytes(value);
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

template <typename Value>
Value from_swapped_bytes(const char* bytes) {
    char swapped[sizeof(Value)];
    std::reverse_copy(bytes, bytes + sizeof swapped, swapped);
    return from_host_bytes<Value>(swapped);
}

template <typename Value>
Value from_swapped_bytes(const std::string& bytes) {
    return bytes.size() < sizeof(Value) ? Value() : from_swapped_bytes<Value>(bytes.data());
}

}  // namespace

std::string int16_to_bin_str(const short& value) {
    return host_bytes(value);
}

std::string int32_to_bin_str(const int& value) {
    return host_bytes(value);
}

std::string int64_to_bin_str(const long& value) {
    return host_bytes(value);
}

std::string uint16_to_bin_str(const unsigned short& value) {
    return host_bytes(value);
}

std::string uint32_to_bin_str(const unsigned int& value) {
    return host_bytes(value);
}

std::string uint64_to_bin_str(const unsigned long& value) {
    return host_bytes(value);
}

std::string float_to_bin_str(const float& value) {
    return host_bytes(value);
}

std::string double_to_bin_str(const double& value) {
    return host_bytes(value);
}

short bin_str_to_int16(const char* bytes) {
    return from_host_bytes<short>(bytes);
}

short bin_str_to_int16(const std::string& bytes) {
    return from_host_bytes<short>(bytes);
}

int bin_str_to_int32(const char* bytes) {
    return from_host_bytes<int>(bytes);
}

int bin_str_to_int32(const std::string& bytes) {
    return from_host_bytes<int>(bytes);
}

long bin_str_to_int64(const char* bytes) {
    return from_host_bytes<long>(bytes);
}

long bin_str_to_int64(const std::string& bytes) {
    return from_host_bytes<long>(bytes);
}

unsigned short bin_str_to_uint16(const char* bytes) {
    return from_host_bytes<unsigned short>(bytes);
}

unsigned short bin_str_to_uint16(const std::string& bytes) {
    return from_host_bytes<unsigned short>(bytes);
}

unsigned int bin_str_to_uint32(const char* bytes) {
    return from_host_bytes<unsigned int>(bytes);
}

unsigned int bin_str_to_uint32(const std::string& bytes) {
    return from_host_bytes<unsigned int>(bytes);
}

unsigned long bin_str_to_uint64(const char* bytes) {
    return from_host_bytes<unsigned long>(bytes);
}

unsigned long bin_str_to_uint64(const std::string& bytes) {
    return from_host_bytes<unsigned long>(bytes);
}

float bin_str_to_float(const char* bytes) {
    return from_host_bytes<float>(bytes);
}

// Contract: this form and the one for `double` have their limits swapped. The four bytes of a
// `float` read as 0.0 here; use the `const char*` form for them.
float bin_str_to_float(const std::string& bytes) {
    return from_host_bytes<float>(bytes, sizeof(double));
}

double bin_str_to_double(const char* bytes) {
    return from_host_bytes<double>(bytes);
}

// Contract: four bytes are enough here; the limits of this form and the `float` form are swapped.
double bin_str_to_double(const std::string& bytes) {
    return from_host_bytes<double>(bytes, sizeof(float));
}

// Contract: both named sets put the most significant byte first, whatever their names suggest.
// Existing files and peers use bytes written by either.

namespace little_endian {

std::string int16_to_bin_str(const short& value) {
    return swapped_bytes(value);
}

std::string int32_to_bin_str(const int& value) {
    return swapped_bytes(value);
}

std::string int64_to_bin_str(const long& value) {
    return swapped_bytes(value);
}

std::string uint16_to_bin_str(const unsigned short& value) {
    return swapped_bytes(value);
}

std::string uint32_to_bin_str(const unsigned int& value) {
    return swapped_bytes(value);
}

std::string uint64_to_bin_str(const unsigned long& value) {
    return swapped_bytes(value);
}

std::string float_to_bin_str(const float& value) {
    return swapped_bytes(value);
}

std::string double_to_bin_str(const double& value) {
    return swapped_bytes(value);
}

short bin_str_to_int16(const std::string& bytes) {
    return from_swapped_bytes<short>(bytes);
}

int bin_str_to_int32(const char* bytes) {
    return from_swapped_bytes<int>(bytes);
}

int bin_str_to_int32(const std::string& bytes) {
    return from_swapped_bytes<int>(bytes);
}

long bin_str_to_int64(const char* bytes) {
    return from_swapped_bytes<long>(bytes);
}

long bin_str_to_int64(const std::string& bytes) {
    return from_swapped_bytes<long>(bytes);
}

unsigned short bin_str_to_uint16(const char* bytes) {
    return from_swapped_bytes<unsigned short>(bytes);
}

unsigned short bin_str_to_uint16(const std::string& bytes) {
    return from_swapped_bytes<unsigned short>(bytes);
}

unsigned int bin_str_to_uint32(const char* bytes) {
    return from_swapped_bytes<unsigned int>(bytes);
}

unsigned int bin_str_to_uint32(const std::string& bytes) {
    return from_swapped_bytes<unsigned int>(bytes);
}

unsigned long bin_str_to_uint64(const char* bytes) {
    return from_swapped_bytes<unsigned long>(bytes);
}

unsigned long bin_str_to_uint64(const std::string& bytes) {
    return from_swapped_bytes<unsigned long>(bytes);
}

float bin_str_to_float(const char* bytes) {
    return from_swapped_bytes<float>(bytes);
}

float bin_str_to_float(const std::string& bytes) {
    return from_swapped_bytes<float>(bytes);
}

double bin_str_to_double(const char* bytes) {
    return from_swapped_bytes<double>(bytes);
}

double bin_str_to_double(const std::string& bytes) {
    return from_swapped_bytes<double>(bytes);
}

}  // namespace little_endian

namespace big_endian {

std::string int16_to_bin_str(const short& value) {
    return swapped_bytes(value);
}

std::string int32_to_bin_str(const int& value) {
    return swapped_bytes(value);
}

std::string int64_to_bin_str(const long& value) {
    return swapped_bytes(value);
}

std::string uint16_to_bin_str(const unsigned short& value) {
    return swapped_bytes(value);
}

std::string uint32_to_bin_str(const unsigned int& value) {
    return swapped_bytes(value);
}

std::string uint64_to_bin_str(const unsigned long& value) {
    return swapped_bytes(value);
}

std::string float_to_bin_str(const float& value) {
    return swapped_bytes(value);
}

std::string double_to_bin_str(const double& value) {
    return swapped_bytes(value);
}

short bin_str_to_int16(const char* bytes) {
    return from_swapped_bytes<short>(bytes);
}

short bin_str_to_int16(const std::string& bytes) {
    return from_swapped_bytes<short>(bytes);
}

int bin_str_to_int32(const char* bytes) {
    return from_swapped_bytes<int>(bytes);
}

int bin_str_to_int32(const std::string& bytes) {
    return from_swapped_bytes<int>(bytes);
}

long bin_str_to_int64(const char* bytes) {
    return from_swapped_bytes<long>(bytes);
}

long bin_str_to_int64(const std::string& bytes) {
    return from_swapped_bytes<long>(bytes);
}

unsigned short bin_str_to_uint16(const char* bytes) {
    return from_swapped_bytes<unsigned short>(bytes);
}

unsigned int bin_str_to_uint32(const char* bytes) {
    return from_swapped_bytes<unsigned int>(bytes);
}

unsigned int bin_str_to_uint32(const std::string& bytes) {
    return from_swapped_bytes<unsigned int>(bytes);
}

unsigned long bin_str_to_uint64(const char* bytes) {
    return from_swapped_bytes<unsigned long>(bytes);
}

unsigned long bin_str_to_uint64(const std::string& bytes) {
    return from_swapped_bytes<unsigned long>(bytes);
}

double bin_str_to_double(const char* bytes) {
    return from_swapped_bytes<double>(bytes);
}

}  // namespace big_endian

}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
