# The compiler options of all targets.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE}")
endif()

add_library(tessarune-options INTERFACE)
target_compile_options(tessarune-options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 gives the first three warnings inside its own standard library when it compiles
  # coroutines with -O2. It gives the last one for types in unnamed namespaces, because a unity
  # build includes their source files.
  target_compile_options(tessarune-options INTERFACE
    -Wno-maybe-uninitialized -Wno-dangling-pointer -Wno-restrict -Wno-subobject-linkage)
  # An initializer that names members leaves the others at their defaults on purpose.
  target_compile_options(tessarune-options INTERFACE -Wno-missing-field-initializers)
  # GoogleTest's macros prevent the mistake that this warning is about.
  target_compile_options(tessarune-options INTERFACE -Wno-dangling-else)
else()
  # -Wthread-safety checks the annotations of TessaruneCore/host/Mutex.h. GCC gets no -Wconversion,
  # because GCC also warns where nothing can be lost.
  target_compile_options(tessarune-options INTERFACE -Wconversion -Wthread-safety)
endif()
target_include_directories(tessarune-options INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_definitions(tessarune-options INTERFACE
  TESSARUNE_VERSION="${PROJECT_VERSION}")

if(TESSARUNE_SANITIZE)
  add_compile_options(-fsanitize=${TESSARUNE_SANITIZE} -fno-omit-frame-pointer)
  add_compile_definitions(TESSARUNE_SANITIZED)
  add_link_options(-fsanitize=${TESSARUNE_SANITIZE})
  if(TESSARUNE_SANITIZE MATCHES "undefined")
    # The address sanitizer finds null pointers anyway. The alignment checks of each member would
    # double the size of the object files.
    add_compile_options(-fno-sanitize=null,alignment,object-size -fno-sanitize-recover=undefined)
  endif()
endif()

# A build links three dozen programs. GNU's linker takes four times as long for them as lld.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  include(CheckLinkerFlag)
  check_linker_flag(CXX -fuse-ld=lld TESSARUNE_HAS_LLD)
  if(TESSARUNE_HAS_LLD)
    add_link_options(-fuse-ld=lld)
  endif()
endif()
