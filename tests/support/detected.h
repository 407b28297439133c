#pragma once

#include <type_traits>

template <class, template <class> class Expression, class Type>
struct Detected : std::false_type {};

template <template <class> class Expression, class Type>
struct Detected<std::void_t<Expression<Type>>, Expression, Type> : std::true_type {};

/// Whether the expression compiles for the type outside the type, so that what is not public
/// counts as absent.
template <template <class> class Expression, class Type>
inline constexpr bool isDetected = Detected<void, Expression, Type>::value;
