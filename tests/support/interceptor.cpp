#include "interceptor.h"

#include <cstring>

#include "code_area.h"

namespace testbed {

namespace {

void append(std::vector<unsigned char>& code, std::initializer_list<unsigned char> bytes) {
    for (const unsigned char byte : bytes) {
        code.push_back(byte);
    }
}

void appendAddress(std::vector<unsigned char>& code, const void* address) {
    unsigned char bytes[sizeof address];
    std::memcpy(bytes, &address, sizeof address);
    for (const unsigned char byte : bytes) {
        code.push_back(byte);
    }
}

std::vector<unsigned char> interceptor(Decide* decide) {
    std::vector<unsigned char> code;
    // The caller reserved four words above the return address for these: there they precede the arguments
    // that it passed on the stack, and all arguments lie in one row.
    append(code, {0x48, 0x89, 0x4C, 0x24, 0x08});                    // mov [rsp+8], rcx
    append(code, {0x48, 0x89, 0x54, 0x24, 0x10});                    // mov [rsp+16], rdx
    append(code, {0x4C, 0x89, 0x44, 0x24, 0x18});                    // mov [rsp+24], r8
    append(code, {0x4C, 0x89, 0x4C, 0x24, 0x20});                    // mov [rsp+32], r9
    append(code, {0x48, 0x83, 0xEC, 0x78});                          // sub rsp, 120
    append(code, {0x0F, 0x29, 0x44, 0x24, 0x20});                    // movaps [rsp+32], xmm0
    append(code, {0x0F, 0x29, 0x4C, 0x24, 0x30});                    // movaps [rsp+48], xmm1
    append(code, {0x0F, 0x29, 0x54, 0x24, 0x40});                    // movaps [rsp+64], xmm2
    append(code, {0x0F, 0x29, 0x5C, 0x24, 0x50});                    // movaps [rsp+80], xmm3
    append(code, {0x48, 0x89, 0xC1});                                // mov rcx, rax: the slot
    append(code, {0x48, 0x8D, 0x94, 0x24, 0x80, 0x00, 0x00, 0x00});  // lea rdx, [rsp+128]: the arguments
    append(code, {0x4C, 0x8D, 0x44, 0x24, 0x60});                    // lea r8, [rsp+96]: the result
    append(code, {0x48, 0xB8});                                      // mov rax, decide
    appendAddress(code, reinterpret_cast<const void*>(decide));
    append(code, {0xFF, 0xD0});                    // call rax
    append(code, {0x0F, 0x28, 0x44, 0x24, 0x20});  // movaps xmm0, [rsp+32]
    append(code, {0x0F, 0x28, 0x4C, 0x24, 0x30});  // movaps xmm1, [rsp+48]
    append(code, {0x0F, 0x28, 0x54, 0x24, 0x40});  // movaps xmm2, [rsp+64]
    append(code, {0x0F, 0x28, 0x5C, 0x24, 0x50});  // movaps xmm3, [rsp+80]
    append(code, {0x4C, 0x8B, 0x54, 0x24, 0x60});  // mov r10, [rsp+96]: the result
    append(code, {0x48, 0x83, 0xC4, 0x78});        // add rsp, 120
    append(code, {0x48, 0x8B, 0x4C, 0x24, 0x08});  // mov rcx, [rsp+8]
    append(code, {0x48, 0x8B, 0x54, 0x24, 0x10});  // mov rdx, [rsp+16]
    append(code, {0x4C, 0x8B, 0x44, 0x24, 0x18});  // mov r8, [rsp+24]
    append(code, {0x4C, 0x8B, 0x4C, 0x24, 0x20});  // mov r9, [rsp+32]
    append(code, {0x48, 0x85, 0xC0});              // test rax, rax
    append(code, {0x74, 0x02});                    // jz over the jump
    append(code, {0xFF, 0xE0});                    // jmp rax
    append(code, {0x4C, 0x89, 0xD0});              // mov rax, r10
    append(code, {0xC3});                          // ret
    return code;
}

}  // namespace

std::vector<unsigned char> trampolineCode(const void* slot) {
    std::vector<unsigned char> code;
    append(code, {0x48, 0xB8});  // mov rax, slot
    appendAddress(code, slot);
    append(code, {0xFF, 0x20});  // jmp [rax]
    return code;
}

const void* interceptorCode(Decide* decide) {
    static const std::vector<unsigned char> code = interceptor(decide);
    // Never freed: other threads may be inside it until the program ends.
    static CodeArea& area = *new CodeArea(CodeArea::anywhere(code.size()));
    static const void* const entry = area.add(code);
    return entry;
}

}  // namespace testbed
