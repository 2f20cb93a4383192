#pragma once

namespace stats {

// The F distribution function, lower tail, with dfn and dfd degrees of freedom. F at most 0 gives 0; degrees
// of freedom not above 0 are a terminal error; not a number gives not a number.
float FDF(float f, float dfn, float dfd);

// The inverse of Student's t distribution function: the t with Pr(T at most t) = p. Exactly 0 within 2^-24 of
// p = 0.5. p outside the open interval (0, 1) and df below 1 are terminal errors.
float TIN(float p, float df);

// The inverse of the standard normal distribution function. p outside (0, 1) is a terminal error.
float ANORIN(float p);

}  // namespace stats
