# Sanitizers for everything that is built, such as XELCSV_SANITIZE=address,undefined. Any report ends the program.
add_compile_options(-fsanitize=${XELCSV_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
add_link_options(-fsanitize=${XELCSV_SANITIZE})
