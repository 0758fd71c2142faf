#pragma once

// The fixed, inclusive limits of the scale and adjust fields. They never change while the program
// runs; a view tests a field against them only after the field has passed its syntax test.
struct Limit {
    double minimum;
    double maximum;
};

inline constexpr Limit ZeroScaleLimit{-32000.0, 32000.0};
inline constexpr Limit FullScaleLimit{-32000.0, 32000.0};
inline constexpr Limit ZeroAdjustLimit{-320.0, 320.0};
inline constexpr Limit FullAdjustLimit{-3.2, 3.2};

// Not below the minimum and not above the maximum; NaN is never in range.
bool InRange(double value, const Limit &limit);
