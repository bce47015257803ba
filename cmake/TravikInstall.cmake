# Headers, libraries, CMake package, pkg-config file and tool.
