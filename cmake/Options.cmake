# Build options; each states its default in its description.
include(FeatureSummary)

option(VALTRONA_GUI "Build the window program and the control library (default: ON)" ON)
option(VALTRONA_TESTS "Build the unit and widget tests (default: ON)" ON)
option(VALTRONA_WERROR "Treat compiler warnings as errors (default: OFF, ON in CI)" OFF)
option(VALTRONA_FUZZ "Build the libFuzzer targets; needs clang (default: OFF)" OFF)
option(VALTRONA_EXAMPLES "Build the control gallery under examples/ (default: ON)" ON)
option(VALTRONA_BENCH "Build the benchmarks under bench/ (default: OFF)" OFF)
option(VALTRONA_SANITIZE "Build with AddressSanitizer and UBSan (default: OFF)" OFF)

add_feature_info(GUI VALTRONA_GUI "window program and control library")
add_feature_info(Tests VALTRONA_TESTS "unit and widget tests")
add_feature_info(Werror VALTRONA_WERROR "warnings are errors")
add_feature_info(Fuzz VALTRONA_FUZZ "libFuzzer targets")
add_feature_info(Examples VALTRONA_EXAMPLES "control gallery")
add_feature_info(Bench VALTRONA_BENCH "benchmarks")
add_feature_info(Sanitize VALTRONA_SANITIZE "AddressSanitizer and UBSan")
