// Does nothing until it is ended.
#include <windows.h>

int main() {
    Sleep(INFINITE);
}
