// The empty value, declared without the headers of the library. README.md says what this is for.
#pragma once

namespace TOVA_2_18 {

namespace types {

class nil_t {};
extern nil_t nil;

}  // namespace types

}  // namespace TOVA_2_18
