#include "page/template.hpp"

// The assembler takes the file as it is; a list of a million numbers would take the compiler long.
__asm__(
    ".section .rodata\n"
    ".global townskin_page_begin\n"
    ".global townskin_page_end\n"
    "townskin_page_begin:\n"
    ".incbin \"" TOWNSKIN_PAGE_FILE
    "\"\n"
    "townskin_page_end:\n"
    ".byte 0\n"
    ".text\n");

extern "C" {
extern const char townskin_page_begin[];
extern const char townskin_page_end[];
}

namespace townskin_view {

std::string_view page_template() {
  return {townskin_page_begin, static_cast<std::size_t>(townskin_page_end - townskin_page_begin)};
}

}  // namespace townskin_view
