/// The exceptions of the library.
///
/// They form a tree of their own: a handler for `std::exception` catches none of them. Each carries
/// a message, read through `get_message()`, and the place where it was raised, which travels
/// inside.
#pragma once

#include <string>

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace exceptions {

/// The root of all exceptions of the library.
class TOVA_API exception {
public:
    /// Where an exception was raised.
    ///
    /// Contract: the texts are copied without a bound, up to their terminator. They are literals of
    /// the source with at most 255 characters, and it is for the caller to see to that.
    struct TOVA_API state {
        unsigned int line;
        char file[256];
        char function[256];

        /// A place; a null text leaves its field as the memory was.
        state(unsigned int line, const char* file, const char* function);

        /// A copy; an empty text leaves its field as the memory was.
        state(const state& source);
    };

    exception(unsigned int line, const char* file, const char* function);
    exception(const exception::state& where);
    exception(const exception& source);
    virtual ~exception() TOVA_NOTHROW;

    /// The message, without the place. Valid as long as the exception object.
    virtual const char* get_message() const = 0;

private:
    state m_state;
};

/// A fault in the use of an operation, which the caller could have avoided.
class TOVA_API logic_error : public exception {
public:
    logic_error(const std::string& message, unsigned int line, const char* file,
                const char* function);
    logic_error(const std::string& message, const exceptions::exception::state& where);
    logic_error(const logic_error& source);
    virtual ~logic_error() TOVA_NOTHROW;

    virtual const char* get_message() const;

private:
    std::string m_message;
};

/// A value lies outside of its valid range.
class TOVA_API out_of_range : public logic_error {
public:
    out_of_range(const std::string& message, unsigned int line, const char* file,
                 const char* function);
    out_of_range(const std::string& message, const exceptions::exception::state& where);
    out_of_range(const out_of_range& source);
    virtual ~out_of_range() TOVA_NOTHROW;
};

/// A text or container has a length that is not allowed.
class TOVA_API length_error : public logic_error {
public:
    length_error(const std::string& message, unsigned int line, const char* file,
                 const char* function);
    length_error(const std::string& message, const exceptions::exception::state& where);
    length_error(const length_error& source);
    virtual ~length_error() TOVA_NOTHROW;
};

/// An argument has a value that no operation accepts.
class TOVA_API invalid_argument_value : public logic_error {
public:
    invalid_argument_value(const std::string& message, unsigned int line, const char* file,
                           const char* function);
    invalid_argument_value(const std::string& message, const exceptions::exception::state& where);
    invalid_argument_value(const invalid_argument_value& source);
    virtual ~invalid_argument_value() TOVA_NOTHROW;
};

/// A fault that shows only while the operation runs.
class TOVA_API runtime_error : public exception {
public:
    runtime_error(const std::string& message, unsigned int line, const char* file,
                  const char* function);
    runtime_error(const std::string& message, const exceptions::exception::state& where);
    runtime_error(const runtime_error& source);
    virtual ~runtime_error() TOVA_NOTHROW;

    virtual const char* get_message() const;

private:
    std::string m_message;
};

/// Something is taken from where nothing is left.
class TOVA_API empty_error : public runtime_error {
public:
    empty_error(const std::string& message, unsigned int line, const char* file,
                const char* function);
    empty_error(const std::string& message, const exceptions::exception::state& where);
    empty_error(const empty_error& source);
    virtual ~empty_error() TOVA_NOTHROW;
};

/// Something is put where no room is left.
class TOVA_API full_error : public runtime_error {
public:
    full_error(const std::string& message, unsigned int line, const char* file,
               const char* function);
    full_error(const std::string& message, const exceptions::exception::state& where);
    full_error(const full_error& source);
    virtual ~full_error() TOVA_NOTHROW;
};

/// A result is above what its type can hold.
class TOVA_API overflow_error : public runtime_error {
public:
    overflow_error(const std::string& message, unsigned int line, const char* file,
                   const char* function);
    overflow_error(const std::string& message, const exceptions::exception::state& where);
    overflow_error(const overflow_error& source);
    virtual ~overflow_error() TOVA_NOTHROW;
};

/// A result is below what its type can hold.
class TOVA_API underflow_error : public runtime_error {
public:
    underflow_error(const std::string& message, unsigned int line, const char* file,
                    const char* function);
    underflow_error(const std::string& message, const exceptions::exception::state& where);
    underflow_error(const underflow_error& source);
    virtual ~underflow_error() TOVA_NOTHROW;
};

}  // namespace exceptions
}  // namespace TOVA_2_18
