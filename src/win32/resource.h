#pragma once

/* The resource compiler reads this, and cmake/ControlTable.cmake: a control is one line
   "#define IDC_name number", by which the dialogs place it; the forms say the name alone. 1 and 2
   are the dialog manager's own (Enter without a default button, and Esc or the close box) and must
   not be given to a control. */

#define TRELV_ICON_PROGRAM 1

/* Of labels that nobody addresses. */
#ifndef IDC_STATIC
#define IDC_STATIC (-1)
#endif

#define IDC_btnOk 1001
#define IDC_cmdDettagli 1002
#define IDC_picError 1003
/* The progress controls, on every form that takes part. */
#define IDC_prgProgress 1005
#define IDC_txtProgress 1006
#define IDC_lblProgress 1007

#define IDC_txtErrLabel 1010
#define IDC_txtProgetto 1011
#define IDC_txtModulo 1012
#define IDC_txtProcedura 1013
#define IDC_txtErrSource 1014
#define IDC_txtErrCodice 1015
#define IDC_txtErrDescrizione 1016
#define IDC_txtErrDescrizioneInterna 1017
#define IDC_txtErrTrace 1018

#define IDC_cmbProduct 1040
#define IDC_optClient 1041
#define IDC_optServer 1042
#define IDC_optSetup 1043
#define IDC_optUpdate 1044
#define IDC_lstVersion 1045
#define IDC_btnRemove 1046
#define IDC_btnRepair 1047
#define IDC_btnExit 1048
#define IDC_lblServerPath 1049
#define IDC_lblClientVersion 1050
#define IDC_lblServerVersion 1051
#define IDC_lblRemove 1052
#define IDC_lblRepair 1053
#define IDC_lblOutcome 1054

/* The forms of the session from a medium. */
#define IDC_ListAmb 1060
#define IDC_ListProd 1061
#define IDC_labTab 1062
#define IDC_cmdExec 1063
#define IDC_cmdback 1064
#define IDC_cmdExit 1065
#define IDC_cmdhelp 1066
#define IDC_lblHeading 1067
#define IDC_picSetup 1068
#define IDC_picProduct 1069

/* The information form: rows from above. */
#define IDC_Label1_0 1080
#define IDC_Label1_1 1081
#define IDC_Label1_2 1082
#define IDC_lblinfo_0 1083
#define IDC_lblinfo_1 1084
#define IDC_lblinfo_2 1085
#define IDC_Command1 1086

/* The input box. */
#define IDC_lblPrompt 1090
#define IDC_txtInput 1091
#define IDC_btnBrowse 1092
#define IDC_btnCancel 1093
