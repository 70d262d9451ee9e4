// Numbers of the resources: commands, dialogs and their controls. Read by the resource compiler too, hence macros.
#pragma once

// NOLINTBEGIN(cppcoreguidelines-macro-usage): the resource compiler knows no constants

#define IDR_MAIN 100
#define IDD_ADJUST 110
#define IDD_COLORS 111
#define IDD_PRINTING 112
#define IDD_SIZE 113

// Controls of the dialogs
#define IDC_INTENSITY 201
#define IDC_CONTRAST 202
#define IDC_GAMMA 203
#define IDC_INTENSITY_VALUE 204
#define IDC_CONTRAST_VALUE 205
#define IDC_GAMMA_VALUE 206
#define IDC_RESET 207
#define IDC_COLOR_COUNT 211
#define IDC_DITHERING 212
#define IDC_PALETTE 213
#define IDC_PRINT_PROGRESS 221
#define IDC_PRINT_TEXT 222
#define IDC_WIDTH 231
#define IDC_HEIGHT 232
#define IDC_KEEP_PROPORTIONS 233
#define IDC_RESAMPLE 234

// Child windows of the main window
#define IDC_CANVAS 251
#define IDC_STATUS 252

// File
#define ID_OPEN 1001
#define ID_SAVE 1002
#define ID_SAVE_AS 1003
#define ID_PRINT 1004
#define ID_EXIT 1005

// Edit
#define ID_UNDO 1101
#define ID_COPY 1102
#define ID_PASTE 1103
#define ID_PASTE_NEW 1104
#define ID_CROP 1105
#define ID_FILL 1106
#define ID_FILL_COLOR 1107
#define ID_CLEAR 1108

// Select
#define ID_SELECT_ALL 1201
#define ID_DESELECT 1202
#define ID_INVERT_SELECTION 1203
#define ID_TOOL_HAND 1211
#define ID_TOOL_RECTANGLE 1212
#define ID_TOOL_ELLIPSE 1213
#define ID_TOOL_POLYGON 1214
#define ID_TOOL_COLOR 1215
#define ID_MODE_SET 1221
#define ID_MODE_ADD 1222
#define ID_MODE_SUBTRACT 1223
#define ID_MODE_INTERSECT 1224
#define ID_MODE_XOR 1225

// View
#define ID_FIT 1301
#define ID_ACTUAL_SIZE 1302
#define ID_ZOOM_IN 1303
#define ID_ZOOM_OUT 1304
#define ID_SMOOTH 1305
#define ID_ADJUST 1306
#define ID_RESET_ADJUST 1307
#define ID_FULL_SCREEN 1308
#define ID_DISPLAY_ORDERED 1311
#define ID_DISPLAY_INDEX 1312
#define ID_DISPLAY_DITHER 1313
#define ID_DISPLAY_GRAY 1314
#define ID_DISPLAY_GRAY_ALT 1315
#define ID_DISPLAY_CLUSTERED 1316
#define ID_DISPLAY_FIXED 1317
#define ID_DISPLAY_CUBE 1318

// Picture
#define ID_ROTATE_LEFT 1401
#define ID_ROTATE_RIGHT 1402
#define ID_ROTATE_HALF 1403
#define ID_FLIP 1404
#define ID_MIRROR 1405
#define ID_RESIZE 1406
#define ID_GRAYSCALE 1411
#define ID_HALFTONE_CLUSTERED 1412
#define ID_HALFTONE_DISPERSED 1413
#define ID_REDUCE_COLORS 1414
#define ID_TRUE_COLOR 1415

// Animation
#define ID_PLAY 1501
#define ID_NEXT_FRAME 1502
#define ID_FIRST_FRAME 1503

#define ID_ABOUT 1601
// Esc: ends what is going on
#define ID_CANCEL 1602

// NOLINTEND(cppcoreguidelines-macro-usage)
