// The counted pointers, declared without the headers of the library. README.md says what this is
// for. The members have no bodies, so a program uses the instantiations that the library exports.
#pragma once

namespace TOVA_2_18 {

namespace memory {
namespace pointers {

template <typename T>
class rc_pointer {
public:
    rc_pointer();
    rc_pointer(T*);
    rc_pointer(const rc_pointer&);
    rc_pointer& operator=(const rc_pointer&);
    rc_pointer& operator=(T*);
    ~rc_pointer() throw();
    T* operator->() const;
    T& operator*() const;

    T* object;
};

template <typename T>
class shared_pointer {
public:
    shared_pointer();
    shared_pointer(T*);
    shared_pointer(const shared_pointer&);
    shared_pointer& operator=(const shared_pointer&);
    shared_pointer& operator=(T*);
    ~shared_pointer() throw();

    T* object;
};

}  // namespace pointers
}  // namespace memory

}  // namespace TOVA_2_18
