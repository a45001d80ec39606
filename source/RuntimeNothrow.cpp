// Debian's static gSOAP runtime is compiled for programs, not for shared libraries: it addresses
// std::nothrow directly, which the linker refuses for a symbol of another library. It is the one such
// symbol, and a tag whose value nobody reads, so this library has its own, hidden from all others.
//
// The shared runtime doesn't help: it wants the generated code's functions exported to it, and the
// API library exports its two entry points and nothing else.

extern "C"
{
    [[gnu::visibility("hidden")]] extern const char gNothrow __asm__("_ZSt7nothrow");
    const char gNothrow = 0;
}
