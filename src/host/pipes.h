// The named pipes over which processes of the client exchange short texts: one side serves a pipe and answers
// every message with "OK", the other sends one message and looks at the answer.
#pragma once

#include <cstddef>

namespace winutil::host {

inline constexpr wchar_t backupPipeName[] = L"\\\\.\\pipe\\BACKUP";
inline constexpr wchar_t messagePipeName[] = L"\\\\.\\pipe\\MESSAGE";

// The bytes of a message as it came, with a zero behind them whatever the client sent.
inline constexpr std::size_t messageSize = 8192;
using MessageBytes = char[messageSize + 1];

// Serves one client: blocks until one connects, and returns when it is done or something fails. `message`
// receives the last message. Bytes of an earlier one stay behind a shorter one.
void serveClient(const wchar_t* pipeName, MessageBytes& message) noexcept;

// Sends one message and reads the answer; waits for a busy pipe. Returns 1 for an answer that sorts before
// "OK". Any other answer gives 0 and so does every failure.
int sendMessage(const wchar_t* pipeName, const wchar_t* message) noexcept;

}  // namespace winutil::host
