// The half of crash reports that needs the library for debugging information; a module that the crash handler loads.

#include <QtGlobal>

#define BACKWARD_HAS_DW 1
#include <ucontext.h>

#include <backward.hpp>
#include <string>
#include <string_view>

namespace quillo {

namespace {

constexpr std::size_t maximumDepth = 64;

void* instructionPointer(void* signalContext) {
  if (signalContext == nullptr) return nullptr;
  const auto* context = static_cast<const ucontext_t*>(signalContext);
#if defined(__x86_64__)
  return reinterpret_cast<void*>(context->uc_mcontext.gregs[REG_RIP]);  // NOLINT(performance-no-int-to-ptr)
#elif defined(__aarch64__)
  return reinterpret_cast<void*>(context->uc_mcontext.pc);  // NOLINT(performance-no-int-to-ptr)
#else
  static_cast<void>(context);
  return nullptr;  // the handler's own frames come first then
#endif
}

std::string place(const backward::ResolvedTrace::SourceLoc& source) {
  if (source.filename.empty()) return {};
  return " at " + source.filename + ':' + std::to_string(source.line);
}

std::string textOfFrame(const backward::ResolvedTrace& trace) {
  std::string text;
  for (const auto& inlined : trace.inliners) text += "      inlined " + inlined.function + place(inlined) + '\n';
  const std::string& function = trace.source.function.empty() ? trace.object_function : trace.source.function;
  return text + '#' + std::to_string(trace.idx) + "    " + (function.empty() ? "(unknown)" : function) +
         place(trace.source) + " in " + trace.object_filename + '\n';
}

}  // namespace

extern "C" Q_DECL_EXPORT void quilloWriteSymbolizedStack(void* signalContext, int descriptor,
                                                         void (*write)(int descriptor, std::string_view)) {
  try {
    backward::StackTrace stack;
    void* const pointer = instructionPointer(signalContext);
    if (pointer != nullptr) {
      stack.load_from(pointer, maximumDepth, signalContext, nullptr);
    } else {
      stack.load_here(maximumDepth);
    }
    backward::TraceResolver resolver;
    resolver.load_stacktrace(stack);
    for (std::size_t index = 0; index < stack.size(); ++index)
      write(descriptor, textOfFrame(resolver.resolve(stack[index])));
  } catch (...) {  // The raw stack is in the report already.
  }
}

}  // namespace quillo
