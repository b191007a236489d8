// Why a failure may come to nothing: the reasons that several recipes have.
#pragma once

namespace testbed::reasons {

inline constexpr char leftOut[] = "what cannot be read is left out";
inline constexpr char listEnds[] = "a list ends where it cannot be read on";
inline constexpr char comesEmpty[] = "what cannot be read comes empty";
inline constexpr char standsIn[] = "something else stands in for what cannot be had";
inline constexpr char nextDecides[] = "what comes next decides";
inline constexpr char nothingLeftToDo[] = "nothing is left to do";
inline constexpr char systemDecides[] = "the system says itself whether the privilege was missing";
inline constexpr char formOfPath[] = "it only decides between the forms of a path";
inline constexpr char noMethod[] = "an item for which the collector has no method is passed over";
inline constexpr char anyModel[] = "the thread has COM in another model, which will do";
inline constexpr char shortTransfer[] = "a short read is answered as such, a short write is none";

}  // namespace testbed::reasons
