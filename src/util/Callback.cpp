#include "util/Callback.h"

namespace util {

Callback::~Callback() = default;

template class BasicCallback<>;
template class BasicCallback<float>;
template class CallbackArg<float>;

}  // namespace util
