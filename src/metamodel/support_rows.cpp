#include "metamodel/support_rows.h"

#include "foundation/exception.h"
#include "foundation/text_stream.h"

namespace corvath::math::metamodel {

void RequireSameRows(std::initializer_list<SupportRows> parts) {
  const SupportRows* first = nullptr;
  for (const SupportRows& part : parts) {
    if (part.number == 0) continue;
    if (!first) first = &part;
    if (part.number == first->number) continue;
    utils::WideTextStream message;
    message << L"Surrogate needs same number of " << first->name << L" (" << first->number
            << L") and " << part.name << L" (" << part.number << L")";
    throw utils::runtime_error(message.str());
  }
}

}  // namespace corvath::math::metamodel
