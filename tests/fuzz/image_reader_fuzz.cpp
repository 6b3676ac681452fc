// The tool's picture reader on a file holding the fuzz bytes: any content
// is a valid input, and a refusal (ToolError) is a valid outcome.
// A few header bytes can declare a picture of up to 2^30 pixels, which the
// reader then tries to allocate and, when the machine lacks the memory,
// refuses as "not enough memory" (std::bad_alloc). The sanitizers report a
// failed operator new instead of throwing, so this harness supplies its own
// operator new with a budget of 256 MB per allocation that throws past it,
// as new does on a machine without that memory; the run sets
// allocator_may_return_null=1 so that malloc past the sanitizer's limit
// returns null to the image libraries, which check it.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <string>

#include "image_io.hpp"
#include "tool_error.hpp"

void *operator new(std::size_t size)
{
    void *block = size <= (std::size_t(256) << 20) ? std::malloc(size == 0 ? 1 : size) : nullptr;
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}
void *operator new[](std::size_t size)
{
    return operator new(size);
}
void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    return size <= (std::size_t(256) << 20) ? std::malloc(size == 0 ? 1 : size) : nullptr;
}
void *operator new[](std::size_t size, const std::nothrow_t &tag) noexcept
{
    return operator new(size, tag);
}
void operator delete(void *block) noexcept
{
    std::free(block);
}
void operator delete[](void *block) noexcept
{
    std::free(block);
}
void operator delete(void *block, std::size_t) noexcept
{
    std::free(block);
}
void operator delete[](void *block, std::size_t) noexcept
{
    std::free(block);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const std::string path =
        (std::filesystem::temp_directory_path() / ("ornex-fuzz-picture-" + std::to_string(getpid()))).string();
    std::FILE *file = std::fopen(path.c_str(), "wb");
    if (file == nullptr || std::fwrite(data, 1, size, file) != size || std::fclose(file) != 0)
        __builtin_trap();
    try {
        (void)ornex::tool::readPicture(path);
    } catch (const ornex::tool::ToolError &) {
    }
    std::filesystem::remove(path);
    return 0;
}
