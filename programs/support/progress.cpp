#include "support/progress.hpp"

#include <unistd.h>

namespace tova_programs {

namespace {

constexpr auto first_pause = std::chrono::milliseconds(500);
constexpr auto pause = std::chrono::milliseconds(100);

}  // namespace

progress::progress(int descriptor, const std::string& what, std::size_t total)
    : m_descriptor(descriptor), m_on_terminal(isatty(descriptor) != 0), m_shown(false),
      m_what(what), m_done(0), m_total(total),
      m_next(std::chrono::steady_clock::now() + first_pause) {}

progress::~progress() {
    if (m_shown)
        show("\r\x1b[K");
}

void progress::step() {
    ++m_done;
    if (!m_on_terminal || std::chrono::steady_clock::now() < m_next)
        return;
    show("\r" + m_what + ' ' + std::to_string(m_done) + " of " + std::to_string(m_total) +
         "\x1b[K");
    m_shown = true;
    m_next = std::chrono::steady_clock::now() + pause;
}

// Progress is no reason to fail, so a line that cannot be written is lost.
void progress::show(const std::string& line) const {
    if (::write(m_descriptor, line.data(), line.size()) < 0)
        return;
}

}  // namespace tova_programs
