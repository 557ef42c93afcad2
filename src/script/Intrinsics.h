#pragma once

#include "script/Forward.h"

namespace script {

class Parser;

using Int = int;
using Float = double;

// The object "math" and the infix functions + - * / ! that use it. The language has no
// operators of its own: these are registered like any other function.
void RegisterIntrinsics(Parser& parser);

// Arithmetic with promotion from int to double; strings concatenate, lists work element
// by element or with a scalar.
ObjectPtr Add(const ObjectPtr& a, const ObjectPtr& b);
ObjectPtr Subtract(const ObjectPtr& a, const ObjectPtr& b);
ObjectPtr Multiply(const ObjectPtr& a, const ObjectPtr& b);
ObjectPtr Divide(const ObjectPtr& a, const ObjectPtr& b);
// Integer division as the processor does it; a zero divisor is a script error.
Int DivInt(Int a, Int b);

}  // namespace script
