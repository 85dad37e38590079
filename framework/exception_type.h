#pragma once

#include <string>

namespace corvane {

// The name of the type of the exception being handled, as its source spells it. To be called in a
// catch block.
std::string CurrentExceptionTypeName();

}  // namespace corvane
