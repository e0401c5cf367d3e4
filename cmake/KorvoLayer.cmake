# korvo_add_layer(NAME SOURCES ... [PUBLIC ...] [PRIVATE ...])
# One folder, one static library Korvo::NAME. PUBLIC and PRIVATE are the libraries it may use: a layer that includes
# from one that is not named here does not link, which is how the layers stay in order.
function(korvo_add_layer NAME)
    cmake_parse_arguments(PARSE_ARGV 1 layer "" "" "SOURCES;PUBLIC;PRIVATE")
    add_library(Korvo${NAME} STATIC ${layer_SOURCES})
    add_library(Korvo::${NAME} ALIAS Korvo${NAME})
    target_include_directories(Korvo${NAME} PUBLIC "${PROJECT_SOURCE_DIR}/src")
    target_link_libraries(Korvo${NAME} PUBLIC ${layer_PUBLIC} PRIVATE korvo_compiler ${layer_PRIVATE})
endfunction()
