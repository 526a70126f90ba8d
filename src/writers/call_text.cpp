#include "writers/call_text.h"

namespace kiv::writers {

Name CallText::use(const session::Variable& variable) {
  if (variable.isNewlyUndeclaredIn(programNumber_))
    warnOfForeignVariable(variable.name());
  return {variable.name()};
}

Name CallText::tensorId(const session::TensorRegistry& created,
                        std::uint32_t id, std::string_view member) {
  const auto use = created.use(id, programNumber_);
  if (!use) return {};
  if (use->isNewlyUndeclared) {
    const NameOf<Family::kGraph> owner = {{use->ownerVariable}};
    warnOfForeignVariable(
        code_->name<format::Part::kGraphTensor>(owner, use->number).text);
  }
  return code_->tensorId(use->ownerVariable, use->number, member);
}

void CallText::warnOfForeignVariable(std::string_view name) {
  warn(
      "%s was created before the output files were switched, the new model "
      "file does not declare it",
      std::string(name));
}

void CallText::warnOfUnsafeTexts() {
  for (const char* text : code_->unsafeTexts()) {
    warn(
        "A text holds a quote, a backslash or a line end and will not read "
        "back from the recording as it was given: %s",
        std::string(text));
  }
}

// The client's log callback may call the library: the messages come before the
// call is written, as they always did, or behind it where it fails.
Status CallText::write(const output::WriteFailures& failures) {
  if (!hasFailed()) {
    if (!code_->unsafeTexts().empty()) warnOfUnsafeTexts();
    messages_.send();
    status_ = session_.files().append(code_->runs(), code_->takeText(true),
                                      failures, messages_);
  }
  messages_.send();
  return status_;
}

}  // namespace kiv::writers
