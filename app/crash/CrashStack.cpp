#include "app/crash/CrashStack.h"

#include "app/crash/CrashReportWriter.h"

#define BACKWARD_HAS_DW 1
#include <ucontext.h>

#include <backward.hpp>
#include <string>

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

void writeFrame(int descriptor, const backward::ResolvedTrace& trace) {
  std::string text;
  for (const auto& inlined : trace.inliners) text += "      inlined " + inlined.function + place(inlined) + '\n';
  const std::string& function = trace.source.function.empty() ? trace.object_function : trace.source.function;
  text += '#' + std::to_string(trace.idx) + "    " + (function.empty() ? "(unknown)" : function) + place(trace.source) +
          " in " + trace.object_filename + '\n';
  CrashReportWriter(descriptor).text(text);
}

}  // namespace

void writeSymbolizedStack(int descriptor, void* signalContext) noexcept {
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
    for (std::size_t index = 0; index < stack.size(); ++index) writeFrame(descriptor, resolver.resolve(stack[index]));
  } catch (...) {  // The raw stack is in the report already.
  }
}

}  // namespace quillo
