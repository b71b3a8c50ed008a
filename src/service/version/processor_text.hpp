// The processor text of the version record, by CPU class.
#pragma once

namespace tav::service {

// The text for a processor of CPU class `cpu_class` (0 to 9, the refined classes 8 and 9
// included); processors of other vendors and the compatible class 1 get the generic text.
const char* processor_text(bool orvat, int cpu_class);

}  // namespace tav::service
