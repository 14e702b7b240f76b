// For tests of an installed program: with TL42RQ_REPORT_DETECTION set in the environment,
// the program prints what the detection splash and the status bar show when the splash
// closes, and ends. Without the variable nothing of this runs.
#pragma once

class MainForm;
class frmTL42RQ_Detection;

// Prints, one line each, "name: text" for lblDllRev, lblMCUrev, lblIDn,
// lblDetectionStatus, StatusBar_1 and StatusBar_2 to standard output when the splash
// closes, then ends the event loop with status 0.
void reportDetectionAndQuit(MainForm& form, frmTL42RQ_Detection& splash);
