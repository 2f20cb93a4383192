#pragma once

namespace stats {

// Chi-square distribution function, lower tail, with df degrees of freedom. Good to single precision.
// A negative chsq gives 0; df below 0.5 is a terminal error; not a number gives not a number.
float CHIDF(float chsq, float df);

}  // namespace stats
