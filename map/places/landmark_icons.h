#pragma once

#include <array>
#include <string_view>

namespace corvane::map {

// The shape of a landmark, drawn for a square of 20 x 20 with Y downwards.
struct LandmarkIcon {
  static constexpr int kSide = 20;

  std::string_view name;
  // The form of SVG's path data, with the absolute commands M, L, C, Q and Z and blanks between
  // all numbers. Inner outlines are holes (even-odd rule).
  std::string_view path;
  // It points at the landmark with its foot, the middle of the lower edge, in place of its centre.
  bool isOnFoot = false;
};

// The first is also drawn for unknown names.
inline constexpr std::array kLandmarkIcons = {
    LandmarkIcon{"pin",
                 "M 10 19 C 8 15 4 11.5 4 7.5 C 4 4 6.7 1.5 10 1.5 C 13.3 1.5 16 4 16 7.5 "
                 "C 16 11.5 12 15 10 19 Z M 10 4.7 L 12.8 7.5 L 10 10.3 L 7.2 7.5 Z",
                 true},
    LandmarkIcon{"flag",
                 "M 9 1 L 11.2 1 L 11.2 2 L 19.5 2 L 16.5 5.7 L 19.5 9.5 L 11.2 9.5 L 11.2 19 "
                 "L 9 19 Z",
                 true},
    LandmarkIcon{"sign",
                 "M 8.8 1 L 11.2 1 L 11.2 2 L 16.5 2 L 19 4.5 L 16.5 7 L 11.2 7 L 11.2 8.5 "
                 "L 11.2 19 L 8.8 19 L 8.8 13.5 L 3.5 13.5 L 1 11 L 3.5 8.5 L 8.8 8.5 Z",
                 true},
    LandmarkIcon{"house",
                 "M 10 2 L 19 10 L 16.5 10 L 16.5 18 L 12 18 L 12 12.5 L 8 12.5 L 8 18 L 3.5 18 "
                 "L 3.5 10 L 1 10 Z"},
    LandmarkIcon{"castle",
                 "M 2.5 18 L 2.5 2.5 L 6 2.5 L 6 5.5 L 8.2 5.5 L 8.2 2.5 L 11.8 2.5 L 11.8 5.5 "
                 "L 14 5.5 L 14 2.5 L 17.5 2.5 L 17.5 18 L 12.2 18 L 12.2 14 Q 12.2 11.5 10 11.5 "
                 "Q 7.8 11.5 7.8 14 L 7.8 18 Z"},
    LandmarkIcon{"camp", "M 10 2 L 19 18 L 13.2 18 L 10 10.5 L 6.8 18 L 1 18 Z"},
    LandmarkIcon{"gate",
                 "M 2 18 L 2 9 C 2 4.5 5.5 2 10 2 C 14.5 2 18 4.5 18 9 L 18 18 L 13.8 18 "
                 "L 13.8 9.5 C 13.8 7.4 12.2 6 10 6 C 7.8 6 6.2 7.4 6.2 9.5 L 6.2 18 Z"},
    LandmarkIcon{"bridge",
                 "M 0.5 5 L 19.5 5 L 19.5 15 L 16.3 15 C 16.3 11.5 14 9.5 10 9.5 "
                 "C 6 9.5 3.7 11.5 3.7 15 L 0.5 15 Z"},
    LandmarkIcon{"boat",
                 "M 9 1.5 L 9 12 L 2.5 12 Z M 10.5 3.5 L 16.5 12 L 10.5 12 Z "
                 "M 1 13.5 L 19 13.5 L 16 18.5 L 4 18.5 Z"},
    LandmarkIcon{
        "anchor",
        "M 8.9 5.9 L 8.9 7.5 L 6 7.5 L 6 9.7 L 8.9 9.7 L 8.9 16.2 C 6.5 15.8 5 14.6 4.6 13 "
        "L 6.2 13 L 3.2 9.3 L 0.8 13 L 2.2 13 C 3 16.7 6 19 10 19 C 14 19 17 16.7 17.8 13 "
        "L 19.2 13 L 16.8 9.3 L 13.8 13 L 15.4 13 C 15 14.6 13.5 15.8 11.1 16.2 "
        "L 11.1 9.7 L 14 9.7 L 14 7.5 L 11.1 7.5 L 11.1 5.9 C 12.2 5.5 12.9 4.5 12.9 3.4 "
        "C 12.9 1.8 11.6 0.7 10 0.7 C 8.4 0.7 7.1 1.8 7.1 3.4 C 7.1 4.5 7.8 5.5 8.9 5.9 Z "
        "M 10 2.2 L 11.3 3.5 L 10 4.8 L 8.7 3.5 Z"},
    LandmarkIcon{"tree",
                 "M 10 1 L 15 7.2 L 12.8 7.2 L 17.5 14.5 L 11.6 14.5 L 11.6 19 L 8.4 19 L 8.4 14.5 "
                 "L 2.5 14.5 L 7.2 7.2 L 5 7.2 Z"},
    LandmarkIcon{"mountain", "M 7.2 3.5 L 11 9.5 L 13.2 6.5 L 19.8 17.5 L 0.2 17.5 Z"},
    LandmarkIcon{
        "water",
        "M 1 4.5 Q 3.2 2 5.5 4.5 Q 7.7 7 10 4.5 Q 12.2 2 14.5 4.5 Q 16.8 7 19 4.5 L 19 8.5 "
        "Q 16.8 11 14.5 8.5 Q 12.2 6 10 8.5 Q 7.7 11 5.5 8.5 Q 3.2 6 1 8.5 Z "
        "M 1 11.5 Q 3.2 9 5.5 11.5 Q 7.7 14 10 11.5 Q 12.2 9 14.5 11.5 Q 16.8 14 19 11.5 "
        "L 19 15.5 Q 16.8 18 14.5 15.5 Q 12.2 13 10 15.5 Q 7.7 18 5.5 15.5 "
        "Q 3.2 13 1 15.5 Z"},
    LandmarkIcon{"fire",
                 "M 10 1 C 11 5 16.5 7.5 16.5 12.5 C 16.5 16.3 13.6 19 10 19 "
                 "C 6.4 19 3.5 16.3 3.5 12.5 C 3.5 10 5 8.5 5.8 6.8 C 6.6 8 7 9 7.8 9.6 "
                 "C 8.8 7 8.8 4 10 1 Z M 10 11.5 C 10.6 13.5 12.3 14.2 12.3 15.6 "
                 "C 12.3 16.8 11.3 17.4 10 17.4 C 8.7 17.4 7.7 16.8 7.7 15.6 "
                 "C 7.7 14.2 9.4 13.5 10 11.5 Z"},
    LandmarkIcon{"sword",
                 "M 10 0.5 L 12 3.5 L 12 11.8 L 16.5 11.8 L 16.5 14.3 L 11.6 14.3 L 11.6 19 "
                 "L 8.4 19 L 8.4 14.3 L 3.5 14.3 L 3.5 11.8 L 8 11.8 L 8 3.5 Z"},
    LandmarkIcon{"shield",
                 "M 10 1.5 L 17.5 3.5 L 17.5 9.5 C 17.5 14 14.5 17 10 19 "
                 "C 5.5 17 2.5 14 2.5 9.5 L 2.5 3.5 Z M 10 4.5 L 10 15.5 C 7 14 5.2 12 5.2 9.2 "
                 "L 5.2 5.8 Z"},
    LandmarkIcon{"skull",
                 "M 10 1.5 C 5 1.5 2.5 4.8 2.5 8.5 C 2.5 11 3.6 12.6 5.5 13.6 L 5.5 18 L 14.5 18 "
                 "L 14.5 13.6 C 16.4 12.6 17.5 11 17.5 8.5 C 17.5 4.8 15 1.5 10 1.5 Z "
                 "M 7 6.5 L 9.2 9 L 7 11.5 L 4.8 9 Z M 13 6.5 L 15.2 9 L 13 11.5 L 10.8 9 Z "
                 "M 9.2 14.5 L 10.8 14.5 L 10.8 18 L 9.2 18 Z"},
    LandmarkIcon{"danger",
                 "M 6.3 1.5 L 13.7 1.5 L 18.5 6.3 L 18.5 13.7 L 13.7 18.5 L 6.3 18.5 L 1.5 13.7 "
                 "L 1.5 6.3 Z M 8.7 4.5 L 11.3 4.5 L 10.9 11.8 L 9.1 11.8 Z "
                 "M 8.8 13.4 L 11.2 13.4 L 11.2 15.8 L 8.8 15.8 Z"},
    LandmarkIcon{"heart",
                 "M 10 18 C 4 13 1.5 10 1.5 6.8 C 1.5 4 3.5 2.2 5.9 2.2 C 7.6 2.2 9.2 3.2 10 4.9 "
                 "C 10.8 3.2 12.4 2.2 14.1 2.2 C 16.5 2.2 18.5 4 18.5 6.8 C 18.5 10 16 13 10 18 Z"},
    LandmarkIcon{"flask",
                 "M 6.5 1.5 L 13.5 1.5 L 13.5 4 L 12.2 4 L 12.2 8 L 17 15.5 "
                 "C 18.2 17.3 17 18.8 15 18.8 L 5 18.8 C 3 18.8 1.8 17.3 3 15.5 L 7.8 8 L 7.8 4 "
                 "L 6.5 4 Z"},
    LandmarkIcon{
        "chest",
        "M 1.5 8.7 C 1.5 5 3.5 3 6 3 L 14 3 C 16.5 3 18.5 5 18.5 8.7 L 12.2 8.7 L 12.2 7.2 "
        "L 7.8 7.2 L 7.8 8.7 Z M 1.5 10.3 L 7.8 10.3 L 7.8 12.7 L 12.2 12.7 L 12.2 10.3 "
        "L 18.5 10.3 L 18.5 17.5 L 1.5 17.5 Z"},
    LandmarkIcon{"gem",
                 "M 5.5 3 L 14.5 3 L 19 8.5 L 10 18.5 L 1 8.5 Z M 4.2 8 L 6.6 5 L 10 5 L 8.2 8 Z"},
    LandmarkIcon{"key",
                 "M 10.2 8.7 L 19.2 8.7 L 19.2 14.4 L 16.7 14.4 L 16.7 11.3 L 14.9 11.3 "
                 "L 14.9 13.6 L 12.4 13.6 L 12.4 11.3 L 10.2 11.3 C 9.6 13.1 8 14.7 5.7 14.7 "
                 "C 3.1 14.7 0.9 12.6 0.9 10 C 0.9 7.4 3.1 5.3 5.7 5.3 C 8 5.3 9.6 6.9 10.2 8.7 Z "
                 "M 5.7 8.1 L 7.6 10 L 5.7 11.9 L 3.8 10 Z"},
    LandmarkIcon{"crown", "M 2 16.5 L 0.8 4.5 L 6 9 L 10 2.8 L 14 9 L 19.2 4.5 L 18 16.5 Z"},
};

}  // namespace corvane::map
