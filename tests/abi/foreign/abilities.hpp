// The abilities, declared without the headers of the library. README.md says what this is for.
#pragma once

namespace TOVA_2_18 {

namespace generic {

namespace abilities {

class alloc_detection_ability {
public:
    bool allocated;
    alloc_detection_ability();
    alloc_detection_ability(const alloc_detection_ability&);
    alloc_detection_ability& operator=(const alloc_detection_ability&);
    ~alloc_detection_ability() throw();
};

class reference_count_pointer_ability_b : public alloc_detection_ability {
public:
    unsigned int count;
    reference_count_pointer_ability_b();
    reference_count_pointer_ability_b(const reference_count_pointer_ability_b&);
    reference_count_pointer_ability_b& operator=(const reference_count_pointer_ability_b&);
    ~reference_count_pointer_ability_b() throw();
};

template <typename T>
class reference_count_pointer_ability : public reference_count_pointer_ability_b {
public:
    reference_count_pointer_ability();
    reference_count_pointer_ability(const reference_count_pointer_ability&);
    reference_count_pointer_ability& operator=(const reference_count_pointer_ability&);
    ~reference_count_pointer_ability() throw();
};

class clone_ability {
public:
    virtual ~clone_ability() throw();
};

class create_ability {
public:
    virtual ~create_ability() throw();
};

}  // namespace abilities

class clone_interface : public abilities::clone_ability {
public:
    clone_interface();
    ~clone_interface() throw() override;
    virtual void* clone() const = 0;
};

}  // namespace generic

}  // namespace TOVA_2_18
