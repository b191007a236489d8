// A level of a registry tree: names, values of all types, lists of strings.
#include "registry/listing.h"
#include "target.h"
#include "windows/answered_calls.h"
#include "windows/java.h"

void fuzz::examine(hostile::Input& input) {
    hostile::Registry answers(input);
    registryAnswers = &answers;
    Java java;
    winutil::registry::listRegistry(java.env(), java.collector(), "HKEY_USERS", "key");
}
