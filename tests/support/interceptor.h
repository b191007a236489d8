// The machine code between a call of the DLL under test and the function it means.
#pragma once

#include <cstdint>
#include <vector>

namespace testbed {

// Says where a call goes. Given the slot of the function and the arguments as they lie on the stack, it
// answers the address to go on to, or null when the call ends here with the result filled in. The call goes
// on with the arguments as it leaves them.
using Decide = const void*(void* slot, std::uint64_t* arguments, std::uint64_t* result);

// Jumps through the first word of the slot, whose address it leaves in rax.
std::vector<unsigned char> trampolineCode(const void* slot);

// What the first word of a slot leads to: it asks decide, with every argument register kept, and then jumps
// to the answer. Nothing of it is on the stack while the function runs. Made once for the whole program.
const void* interceptorCode(Decide* decide);

}  // namespace testbed
