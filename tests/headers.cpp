// Nothing: CMake wants a source beside the headers that it compiles in advance.
