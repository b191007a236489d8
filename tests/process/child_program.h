// The test program as a child of its own tests: started with one of these jobs, it does that and nothing
// else.
//   flood BYTES CODE   writes so many bytes to each stream, standard output and error in turns, and ends with
//                      the code
//   exit CODE          ends
//   silent EVENT CODE  closes both streams, waits for the event of that name and ends with the code
//   speak EVENT CODE   writes "ready" to standard output, waits for the event and ends with the code
//   handles            writes the values of the pipe handles that it has, a line each
//   tell               writes its user profile folder and its current folder, a line each
//   wait               says that it has begun, and waits until it is ended
#pragma once

#include <windows.h>

#include <string>

namespace testbed {

// The path of the test program.
std::wstring childProgram();

// The command line that starts it with a job.
std::wstring childCommandLine(const std::wstring& job);

// The event that "wait" sets when it has begun, in a process of this id.
HANDLE beginningOf(DWORD processId);

// The byte that "flood" writes at a place of a stream.
char floodByte(std::size_t place, bool isError);

}  // namespace testbed
