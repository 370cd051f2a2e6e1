// simulate_method.h: The socket's "simulate" method: the changes a user or the system makes, on the
// simulated desktop.
#pragma once

#include "automation/automation_methods.h"

namespace corvetta {

class SimulatedDesktop;

// Adds "simulate" to the socket's methods. Only the simulated desktop has it; elsewhere the
// method stays unknown, answered as any other unknown method. `desktop` outlives `methods`.
void addSimulateMethod(AutomationMethods& methods, SimulatedDesktop& desktop);

}  // namespace corvetta
