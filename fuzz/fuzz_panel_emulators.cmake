oled_fuzz_target(fuzz_panel_emulators fuzz_panel_emulators.cpp)
# The emulators' comparisons are against bytes shifted in from pin edges,
# never against input bytes, so comparison tracing cannot guide this
# target; without it the simulated SoC runs about twice as fast.
target_compile_options(oled_sim PRIVATE -fno-sanitize-coverage=trace-cmp)
