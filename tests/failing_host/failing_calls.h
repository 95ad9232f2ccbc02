// Lets each call that an object makes to its host fail, one at a time.
#pragma once

#include <functional>
#include <map>
#include <string>

namespace failing_calls {

// How often the object made each call since the last start.
using counts = std::map<std::string, int>;

void start();                                         // counts from zero, nothing fails
void start(const std::string& call, int occurrence);  // that one fails, from 1
counts made();

// Runs before the object's object_attr_setvalueof reaches the host, with the attribute's name. Of
// the tests' main thread.
extern std::function<void(const std::string& attribute)> before_setvalueof;

}  // namespace failing_calls
