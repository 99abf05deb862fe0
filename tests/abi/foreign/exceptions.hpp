// The exceptions, declared without the headers of the library. README.md says what this is for.
#pragma once

#include <string>

namespace TOVA_2_18 {

namespace exceptions {

class exception {
public:
    struct state {
        unsigned int line;
        char file[256];
        char function[256];
        state(unsigned int line, const char* file, const char* function);
        state(const state&);
    };
    exception(unsigned int line, const char* file, const char* function);
    exception(const exception::state&);
    exception(const exception&);
    virtual ~exception() throw();
    virtual const char* get_message() const = 0;

    state where;
};

class logic_error : public exception {
public:
    logic_error(const std::string& message, unsigned int line, const char* file,
                const char* function);
    logic_error(const std::string& message, const exception::state& where);
    logic_error(const logic_error&);
    ~logic_error() throw() override;
    const char* get_message() const override;

    std::string message;
};

class out_of_range : public logic_error {
public:
    out_of_range(const std::string& message, unsigned int line, const char* file,
                 const char* function);
    out_of_range(const std::string& message, const exception::state& where);
    out_of_range(const out_of_range&);
    ~out_of_range() throw() override;
};

class length_error : public logic_error {
public:
    length_error(const std::string& message, unsigned int line, const char* file,
                 const char* function);
    length_error(const std::string& message, const exception::state& where);
    length_error(const length_error&);
    ~length_error() throw() override;
};

class invalid_argument_value : public logic_error {
public:
    invalid_argument_value(const std::string& message, unsigned int line, const char* file,
                           const char* function);
    invalid_argument_value(const std::string& message, const exception::state& where);
    invalid_argument_value(const invalid_argument_value&);
    ~invalid_argument_value() throw() override;
};

class runtime_error : public exception {
public:
    runtime_error(const std::string& message, unsigned int line, const char* file,
                  const char* function);
    runtime_error(const std::string& message, const exception::state& where);
    runtime_error(const runtime_error&);
    ~runtime_error() throw() override;
    const char* get_message() const override;

    std::string message;
};

class empty_error : public runtime_error {
public:
    empty_error(const std::string& message, unsigned int line, const char* file,
                const char* function);
    empty_error(const std::string& message, const exception::state& where);
    empty_error(const empty_error&);
    ~empty_error() throw() override;
};

class full_error : public runtime_error {
public:
    full_error(const std::string& message, unsigned int line, const char* file,
               const char* function);
    full_error(const std::string& message, const exception::state& where);
    full_error(const full_error&);
    ~full_error() throw() override;
};

class overflow_error : public runtime_error {
public:
    overflow_error(const std::string& message, unsigned int line, const char* file,
                   const char* function);
    overflow_error(const std::string& message, const exception::state& where);
    overflow_error(const overflow_error&);
    ~overflow_error() throw() override;
};

class underflow_error : public runtime_error {
public:
    underflow_error(const std::string& message, unsigned int line, const char* file,
                    const char* function);
    underflow_error(const std::string& message, const exception::state& where);
    underflow_error(const underflow_error&);
    ~underflow_error() throw() override;
};

}  // namespace exceptions

}  // namespace TOVA_2_18
