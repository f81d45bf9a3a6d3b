# Reads layers.txt:
#
#   TARVCORE_LAYERS             the layers from bottom to top
#   TARVCORE_TOPICS_<layer>     the topics of a layer
#   TARVCORE_PUBLIC_HEADERS     the headers for users, as they are included
set(layers_file ${CMAKE_CURRENT_LIST_DIR}/layers.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${layers_file})

set(TARVCORE_LAYERS)
set(TARVCORE_PUBLIC_HEADERS)
file(STRINGS ${layers_file} lines REGEX "^[^#]")
foreach(line IN LISTS lines)
    if(line MATCHES "^([a-z_]+)$")
        set(layer ${line})
        list(APPEND TARVCORE_LAYERS ${layer})
        set(TARVCORE_TOPICS_${layer})
    elseif(line MATCHES "^    ([a-z0-9_/]+)$")
        set(topic ${CMAKE_MATCH_1})
        list(APPEND TARVCORE_TOPICS_${layer} ${topic})
        if(NOT topic MATCHES "^impl/" AND EXISTS ${CMAKE_CURRENT_LIST_DIR}/../tarvcore/${topic}.h)
            list(APPEND TARVCORE_PUBLIC_HEADERS tarvcore/${topic}.h)
        endif()
    else()
        message(FATAL_ERROR "${layers_file}: this is neither a layer nor a topic: ${line}")
    endif()
endforeach()
