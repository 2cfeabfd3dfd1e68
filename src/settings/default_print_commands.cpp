#include "settings/print_commands.h"

namespace quirepress {

std::string_view DefaultPrintCommands() {
    return R"text(# How files are printed that neither the printer nor the print system takes as they are.
# docs/print-commands.md tells all about this file. It is read again whenever it has changed.
#
# COMMAND;name        begins a group; of several groups for a type, the first whose program is there counts
# TYPES;types         endings (.doc) and MIME types (text/plain, text/*)
# PDF;command line    makes a PDF of the file, which is then printed; or
# PRINT;command line  prints the file by itself, on the default printer
# LIMIT;seconds       time for one file, then the program is ended with all that it has started
# BATCH;files         so many files may be given to one call
#
# %1 the file   %u the same as an address (file:///...)   %* the files of the call, each a word of its own
# %o the PDF to be made   %d the folder for it, where it is to be named like the file
# %t a folder that the program may use as it likes   %T the same as an address   %p the printer   %% a %
# A command line is started as it is, without a shell.
#
# SCRIPTLIMIT;seconds is the time for a script of the list; 0: as long as it takes.

SCRIPTLIMIT;0

COMMAND;Office documents
TYPES;.doc .docx .docm .dot .dotx .odt .ott .fodt .rtf .wpd .wps .sxw
TYPES;.xls .xlsx .xlsm .xlsb .xlt .xltx .ods .ots .fods .sxc .csv
TYPES;.ppt .pptx .pptm .pps .ppsx .odp .otp .fodp .sxi .odg .otg .fodg .vsd .vsdx .pub
TYPES;application/msword application/rtf application/vnd.ms-excel application/vnd.ms-powerpoint
TYPES;application/vnd.oasis.opendocument.text application/vnd.oasis.opendocument.spreadsheet
PDF;soffice -env:UserInstallation=%T --headless --norestore --convert-to pdf --outdir %d %*
LIMIT;600
BATCH;50

COMMAND;Web pages
TYPES;.htm .html .xhtml .xml .svg text/html
PDF;chromium --headless --disable-gpu --user-data-dir=%t --no-first-run --no-pdf-header-footer --virtual-time-budget=5000 --print-to-pdf=%o %u
LIMIT;120

COMMAND;Web pages without a browser
TYPES;.htm .html .xhtml text/html
PDF;soffice -env:UserInstallation=%T --headless --norestore "--infilter=HTML (StarWriter)" --convert-to pdf:writer_pdf_Export --outdir %d %*
LIMIT;120
BATCH;50

COMMAND;Pictures
TYPES;.wmf .emf .svg .webp .jpg .jpeg .jpe .png .gif .tif .tiff .bmp .pcx .psd .tga image/*
PDF;soffice -env:UserInstallation=%T --headless --norestore --convert-to pdf:draw_pdf_Export --outdir %d %*
LIMIT;120
BATCH;50

COMMAND;Texts and saved mail
TYPES;.txt .text .log .md .ini .cfg .conf .json .yaml .yml .eml .mht .xml text/* message/rfc822
PDF;soffice -env:UserInstallation=%T --headless --norestore "--infilter=Text (encoded):UTF8" --convert-to pdf:writer_pdf_Export --outdir %d %*
LIMIT;120
BATCH;50
)text";
}

}  // namespace quirepress
