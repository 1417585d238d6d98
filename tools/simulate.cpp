// SPDX-License-Identifier: MIT
// traguardo simulate: a session of a simulated car.
#include <fmt/format.h>

#include "commands.h"
#include "failure.h"

namespace traguardo::tool {

void simulate_session(const SimulateOptions& options) {
  std::string error;
  simulator::SimulationSummary summary;
  if (!simulator::simulate_to_file(options.session, options.output, error, &summary)) throw Failure(error);
  if (options.output == "-") return;
  print_out(fmt::format("{}: {} laps, {} channels, {} samples, {:.1f} s, {} bytes\n", options.output,
                        summary.lap_times_ms.size(), summary.channels.size(), summary.samples, summary.duration_s,
                        summary.bytes));
}

}  // namespace traguardo::tool
