# What a host links: shared libraries, headers, a CMake package and pkg-config files.
