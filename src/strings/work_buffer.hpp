/// @file
/// Room for the worst case of a conversion.
///
///     detail::work_buffer<char> output(4 * size);
///     std::size_t written = kernels::utf16_to_utf8(units, size, output.units());
///
/// A buffer lives for one conversion and belongs to the thread that runs it.
#pragma once

#include <cstddef>
#include <memory>

namespace TOVA_2_18 {
namespace strings {
namespace detail {

// A fixed number of units, allocated once and filled by index. Small buffers are on the stack. The
// units are not initialized, because only those that were filled are copied out.
template <typename Unit>
class work_buffer {
public:
    explicit work_buffer(std::size_t size)
        : m_size(size), m_heap(size > local_size ? new Unit[size] : nullptr),
          m_units(m_heap ? m_heap.get() : m_local) {}
    work_buffer(const work_buffer&) = delete;
    work_buffer& operator=(const work_buffer&) = delete;

    std::size_t size() const { return m_size; }
    Unit* units() { return m_units; }

private:
    static const std::size_t local_size = 256;

    std::size_t m_size;
    std::unique_ptr<Unit[]> m_heap;
    Unit* m_units;
    Unit m_local[local_size];
};

}  // namespace detail
}  // namespace strings
}  // namespace TOVA_2_18
