# The languages of the dialogs: those that have a text file, src/ui/resources/Text.de_DE.rh and its like.
file(GLOB OKO_LANGUAGES CONFIGURE_DEPENDS RELATIVE ${CMAKE_SOURCE_DIR}/src/ui/resources
    ${CMAKE_SOURCE_DIR}/src/ui/resources/Text.*.rh)
list(TRANSFORM OKO_LANGUAGES REPLACE "^Text\\.(.+)\\.rh$" "\\1")
