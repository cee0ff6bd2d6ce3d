.pragma library

// Bounds of the colour mapping sliders, by thermal camera.
var oldLeptonMinValue = 0;
var oldLeptonMaxValue = 16383;
var newLeptonMinValue = 16383;
var newLeptonMaxValue = 40000;

// Values of currentProject.activeExportOperation.
var activeExportNothing = 0;
var activeExportVideo = 1;
var activeExportWordDocument = 2;

var borderColor = "#777777";
var bgndColor = "#555555";
var headerColor = "#444444";
var pressedColor = "#ff0000";
var btnColorClicked = "#BBBBBB";
var btnColorHover = "#999999";
var btnColor = "#777777";
var btnColorTbHover = "#555555";
var btnColorTbChecked = "#151515";
var btnColorTbCheckedDisabled = "#373737";
var btnColorDisabled = "#555";
var btnTextColor = "#000000";
var btnTextPressedColor = "#ffffff";
var disabledBtnColor = "#555555";
var disabledCheckedBtnBg = "#333333";
var checkedBtnBg = "#111";
var checkedBtnFg = "#12ff54";
var uncheckedBtnFg = "#000000";
var disabledBtnFg = "#222222";
var disabledCheckedBtnFg = "#999999";
var progressBarBg = "#46af63";
var accentColor = "#12ff54";
