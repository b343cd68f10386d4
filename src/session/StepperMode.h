#pragma once

// Which groups the stepper walks through; inactive steps through single items.
enum class StepperMode : int { inactive, sublocation, province, country, city };
