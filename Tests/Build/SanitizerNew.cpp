// The address sanitizer's operator new ends the program when memory runs out. Tests that ask for more than there is
// need the answer of the language, std::bad_alloc. The memory still comes from the sanitizer's malloc and stays
// checked.

#include <cstdlib>
#include <new>

void* operator new(std::size_t bytes) {
    if (void* memory = std::malloc(bytes ? bytes : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}

void* operator new[](std::size_t bytes) {
    return operator new(bytes);
}

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return std::malloc(bytes ? bytes : 1);
}

void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return std::malloc(bytes ? bytes : 1);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete[](void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
