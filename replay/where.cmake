# Prints the directory that it is run in.
message("${CMAKE_CURRENT_BINARY_DIR}")
