oled_fuzz_target(fuzz_probes fuzz_probes.cpp oled_readsys)
target_sources(fuzz_probes PRIVATE fuzz_box.cpp)
set_target_properties(fuzz_probes PROPERTIES CXX_STANDARD 17)
