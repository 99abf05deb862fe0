// Every class of the hierarchy has the same four operations: two constructors that differ in how
// the location is passed, a copy constructor and a destructor. All of them are written out, since
// modules link against each by name. Only three places do any work: `state` copies the location,
// and `logic_error` and `runtime_error` each hold a message. The leaves pass their arguments on.
#include <tova/exceptions/exceptions.hpp>

namespace TOVA_2_18 {
namespace exceptions {

namespace {

// Contract: no bounds check, see `exception::state`. Nothing is written past the terminator, so a
// throw copies only as many bytes as the location has, not the full 512.
void copy_string(char* target, const char* source) {
    while (*source != '\0')
        *target++ = *source++;
    *target = '\0';
}

}  // namespace

exception::state::state(unsigned int raise_line, const char* raise_file, const char* raise_function)
    : line(raise_line) {
    if (raise_file != nullptr)
        copy_string(file, raise_file);
    if (raise_function != nullptr)
        copy_string(function, raise_function);
}

// Contract: a field that is empty in the source stays uninitialized here, although the constructor
// above writes a terminator for an empty string.
exception::state::state(const state& source) : line(source.line) {
    if (source.file[0] != '\0')
        copy_string(file, source.file);
    if (source.function[0] != '\0')
        copy_string(function, source.function);
}

// --- The root ------------------------------------------------------------------------------------

exception::exception(unsigned int line, const char* file, const char* function)
    : m_state(line, file, function) {}

exception::exception(const exception::state& where) : m_state(where) {}

exception::exception(const exception& source) : m_state(source.m_state) {}

exception::~exception() TOVA_NOTHROW {}

// --- logic_error and its leaves ------------------------------------------------------------------

logic_error::logic_error(const std::string& message, unsigned int line, const char* file,
                         const char* function)
    : exception(line, file, function), m_message(message) {}

logic_error::logic_error(const std::string& message, const exceptions::exception::state& where)
    : exception(where), m_message(message) {}

logic_error::logic_error(const logic_error& source)
    : exception(source), m_message(source.m_message) {}

logic_error::~logic_error() TOVA_NOTHROW {}

const char* logic_error::get_message() const {
    return m_message.c_str();
}

out_of_range::out_of_range(const std::string& message, unsigned int line, const char* file,
                           const char* function)
    : logic_error(message, line, file, function) {}

out_of_range::out_of_range(const std::string& message, const exceptions::exception::state& where)
    : logic_error(message, where) {}

out_of_range::out_of_range(const out_of_range& source) : logic_error(source) {}

out_of_range::~out_of_range() TOVA_NOTHROW {}

length_error::length_error(const std::string& message, unsigned int line, const char* file,
                           const char* function)
    : logic_error(message, line, file, function) {}

length_error::length_error(const std::string& message, const exceptions::exception::state& where)
    : logic_error(message, where) {}

length_error::length_error(const length_error& source) : logic_error(source) {}

length_error::~length_error() TOVA_NOTHROW {}

invalid_argument_value::invalid_argument_value(const std::string& message, unsigned int line,
                                               const char* file, const char* function)
    : logic_error(message, line, file, function) {}

invalid_argument_value::invalid_argument_value(const std::string& message,
                                               const exceptions::exception::state& where)
    : logic_error(message, where) {}

invalid_argument_value::invalid_argument_value(const invalid_argument_value& source)
    : logic_error(source) {}

invalid_argument_value::~invalid_argument_value() TOVA_NOTHROW {}

// --- runtime_error and its leaves ----------------------------------------------------------------

// Contract: the counterpart of `logic_error`, with a message of its own. The root is their only
// common base, so a handler for one never catches the other.
runtime_error::runtime_error(const std::string& message, unsigned int line, const char* file,
                             const char* function)
    : exception(line, file, function), m_message(message) {}

runtime_error::runtime_error(const std::string& message, const exceptions::exception::state& where)
    : exception(where), m_message(message) {}

runtime_error::runtime_error(const runtime_error& source)
    : exception(source), m_message(source.m_message) {}

runtime_error::~runtime_error() TOVA_NOTHROW {}

const char* runtime_error::get_message() const {
    return m_message.c_str();
}

empty_error::empty_error(const std::string& message, unsigned int line, const char* file,
                         const char* function)
    : runtime_error(message, line, file, function) {}

empty_error::empty_error(const std::string& message, const exceptions::exception::state& where)
    : runtime_error(message, where) {}

empty_error::empty_error(const empty_error& source) : runtime_error(source) {}

empty_error::~empty_error() TOVA_NOTHROW {}

full_error::full_error(const std::string& message, unsigned int line, const char* file,
                       const char* function)
    : runtime_error(message, line, file, function) {}

full_error::full_error(const std::string& message, const exceptions::exception::state& where)
    : runtime_error(message, where) {}

full_error::full_error(const full_error& source) : runtime_error(source) {}

full_error::~full_error() TOVA_NOTHROW {}

overflow_error::overflow_error(const std::string& message, unsigned int line, const char* file,
                               const char* function)
    : runtime_error(message, line, file, function) {}

overflow_error::overflow_error(const std::string& message,
                               const exceptions::exception::state& where)
    : runtime_error(message, where) {}

overflow_error::overflow_error(const overflow_error& source) : runtime_error(source) {}

overflow_error::~overflow_error() TOVA_NOTHROW {}

underflow_error::underflow_error(const std::string& message, unsigned int line, const char* file,
                                 const char* function)
    : runtime_error(message, line, file, function) {}

underflow_error::underflow_error(const std::string& message,
                                 const exceptions::exception::state& where)
    : runtime_error(message, where) {}

underflow_error::underflow_error(const underflow_error& source) : runtime_error(source) {}

underflow_error::~underflow_error() TOVA_NOTHROW {}

}  // namespace exceptions
}  // namespace TOVA_2_18
