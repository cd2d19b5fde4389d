/// Settings of the sanitizers, the same for all fuzz targets.

// The library asks for memory without throwing and lives with a null.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
