/// @file
/// The exceptions that the library raises.
///
/// They form a tree of their own, and none of them is a `std::exception`: a handler for
/// `std::exception` catches none of them, and there is no `what()`. Catch `exceptions::exception`,
/// or a class below it, and read `get_message()`:
///
///     try {
///         due.day(32);
///     } catch (const tova::exceptions::exception& error) {
///         std::cerr << error.get_message() << '\n';  // day value out of valid range
///     }
///
/// Some operations raise classes of the standard library instead (`std::out_of_range`,
/// `std::bad_alloc`); their comments name them in full. A program that wants to catch everything
/// needs a handler for each of the two roots.
///
/// Threads: an exception owns its message and its location, and a copy shares nothing with its
/// source. Any number of threads may raise and catch exceptions at once.
#pragma once

#include <tova/abi.hpp>

#include <string>

namespace TOVA_2_18 {
namespace exceptions {

/// The root of the tree: a message, and the source location of the raise.
///
/// The location travels with the exception for debuggers and has no accessor; handlers see the
/// message alone.
class TOVA_API exception {
public:
    /// The source location of a raise.
    ///
    /// Contract: strings are copied up to their terminator without a bounds check. Pass literals
    /// of at most 255 characters; a longer string overruns its array.
    struct TOVA_API state {
        unsigned int line;   ///< The line in the source file, from 1; any number is kept.
        char file[256];      ///< The path of the source file, with its terminator.
        char function[256];  ///< The name of the function, with its terminator.

        /// Records a source location. A null argument leaves that array uninitialized.
        state(unsigned int line, const char* file, const char* function);

        /// Copies a source location. An empty string leaves that array uninitialized.
        state(const state& source);
    };

    /// Records the source location, as `exception::state` does.
    exception(unsigned int line, const char* file, const char* function);
    exception(const exception::state& where);

    exception(const exception& source);
    virtual ~exception() TOVA_NOTHROW;

    /// The message alone, without the location. The pointer is valid as long as the exception.
    virtual const char* get_message() const = 0;

private:
    state m_state;
};

/// An error in the use of an operation, which the caller could have avoided.
class TOVA_API logic_error : public exception {
public:
    /// Copies the message, which may be empty, and records the source location as
    /// `exception::state` does. Raises only what an allocation raises.
    logic_error(const std::string& message, unsigned int line, const char* file,
                const char* function);
    logic_error(const std::string& message, const exceptions::exception::state& where);

    logic_error(const logic_error& source);
    ~logic_error() TOVA_NOTHROW override;

    const char* get_message() const override;

private:
    std::string m_message;
};

/// A value is outside its valid range.
class TOVA_API out_of_range : public logic_error {
public:
    /// Takes a message and a source location, as the constructors of `logic_error` do.
    out_of_range(const std::string& message, unsigned int line, const char* file,
                 const char* function);
    out_of_range(const std::string& message, const exceptions::exception::state& where);

    out_of_range(const out_of_range& source);
    ~out_of_range() TOVA_NOTHROW override;
};

/// A string or container has a length that is not allowed.
class TOVA_API length_error : public logic_error {
public:
    /// Takes a message and a source location, as the constructors of `logic_error` do.
    length_error(const std::string& message, unsigned int line, const char* file,
                 const char* function);
    length_error(const std::string& message, const exceptions::exception::state& where);

    length_error(const length_error& source);
    ~length_error() TOVA_NOTHROW override;
};

/// An argument has a value that no operation accepts.
class TOVA_API invalid_argument_value : public logic_error {
public:
    /// Takes a message and a source location, as the constructors of `logic_error` do.
    invalid_argument_value(const std::string& message, unsigned int line, const char* file,
                           const char* function);
    invalid_argument_value(const std::string& message, const exceptions::exception::state& where);

    invalid_argument_value(const invalid_argument_value& source);
    ~invalid_argument_value() TOVA_NOTHROW override;
};

/// An error that only shows while the operation runs.
class TOVA_API runtime_error : public exception {
public:
    /// Copies the message, which may be empty, and records the source location as
    /// `exception::state` does. Raises only what an allocation raises.
    runtime_error(const std::string& message, unsigned int line, const char* file,
                  const char* function);
    runtime_error(const std::string& message, const exceptions::exception::state& where);

    runtime_error(const runtime_error& source);
    ~runtime_error() TOVA_NOTHROW override;

    const char* get_message() const override;

private:
    std::string m_message;
};

/// Something is taken from a container that is empty.
class TOVA_API empty_error : public runtime_error {
public:
    /// Takes a message and a source location, as the constructors of `runtime_error` do.
    empty_error(const std::string& message, unsigned int line, const char* file,
                const char* function);
    empty_error(const std::string& message, const exceptions::exception::state& where);

    empty_error(const empty_error& source);
    ~empty_error() TOVA_NOTHROW override;
};

/// Something is put into a container that is full.
class TOVA_API full_error : public runtime_error {
public:
    /// Takes a message and a source location, as the constructors of `runtime_error` do.
    full_error(const std::string& message, unsigned int line, const char* file,
               const char* function);
    full_error(const std::string& message, const exceptions::exception::state& where);

    full_error(const full_error& source);
    ~full_error() TOVA_NOTHROW override;
};

/// A result is larger than its type can hold.
class TOVA_API overflow_error : public runtime_error {
public:
    /// Takes a message and a source location, as the constructors of `runtime_error` do.
    overflow_error(const std::string& message, unsigned int line, const char* file,
                   const char* function);
    overflow_error(const std::string& message, const exceptions::exception::state& where);

    overflow_error(const overflow_error& source);
    ~overflow_error() TOVA_NOTHROW override;
};

/// A result is smaller than its type can hold.
class TOVA_API underflow_error : public runtime_error {
public:
    /// Takes a message and a source location, as the constructors of `runtime_error` do.
    underflow_error(const std::string& message, unsigned int line, const char* file,
                    const char* function);
    underflow_error(const std::string& message, const exceptions::exception::state& where);

    underflow_error(const underflow_error& source);
    ~underflow_error() TOVA_NOTHROW override;
};

}  // namespace exceptions
}  // namespace TOVA_2_18
