#pragma once

#include <cstdint>

/// An entity name or a selection-set name: two 64-bit words, {0, 0} means none.
using ads_name = std::int64_t[2];
using ads_real = double;
using ads_point = double[3];

/// The value of one list element; which member counts follows from the element's type.
union ads_u_val {
    ads_real rreal;
    ads_real rpoint[3];
    short rint;
    wchar_t* rstring;  ///< memory of `acad_malloc`, released with its list; may be null
    ads_name rlname;
    std::int32_t rlong;
};

/// One element of a singly linked list of typed values: a DXF group code or a result type, and its
/// value. Whoever receives a list from an operation owns it and releases it with `acutRelRb`.
struct resbuf {
    resbuf* rbnext;
    short restype;
    ads_u_val resval;
};

// Result codes. Anything but RTNORM is a failure.
inline constexpr int RTNORM = 5100;
inline constexpr int RTERROR = -5001;
inline constexpr int RTCAN = -5002;
inline constexpr int RTREJ = -5003;
inline constexpr int RTFAIL = -5004;
inline constexpr int RTKWORD =
    -5005;  ///< also what `acdbEntMake` answers to a completed block definition

// Result types.
inline constexpr int RTREAL = 5001;
inline constexpr int RTPOINT = 5002;
inline constexpr int RTSHORT = 5003;
inline constexpr int RTSTR = 5005;
inline constexpr int RTENAME = 5006;
inline constexpr int RTLONG = 5010;
inline constexpr int RTLB = 5016;
inline constexpr int RTLE = 5017;
inline constexpr int RTDOTE = 5018;
inline constexpr int RTNIL = 5019;
inline constexpr int RTDXF0 = 5020;  ///< stands for group 0 in lists given to `acutBuildList`
inline constexpr int RTT = 5021;
