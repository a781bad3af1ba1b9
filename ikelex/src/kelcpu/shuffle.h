// KEL_SHUFFLE(a, b, indices...) puts the lanes of two vectors of one integer type into a new order.
// Indices count through `a` and on through `b`. There are as many as a vector has lanes.
#ifndef KELCPU_SHUFFLE_H
#define KELCPU_SHUFFLE_H

#if defined(__clang__) || __GNUC__ >= 12
#define KEL_SHUFFLE(a, b, ...) __builtin_shufflevector(a, b, __VA_ARGS__)
#else
#define KEL_SHUFFLE(a, b, ...) __builtin_shuffle(a, b, decltype((a) + (b)){__VA_ARGS__})
#endif

#endif  // KELCPU_SHUFFLE_H
