// Every text that a person sees, by number: ZV_STRING(number, name, English text), in ascending order of the
// numbers. UTF-8, printf-style where the text takes values. To add one, add its row here; ZvStrings finds it
// by ZvStr::name or by the number. A list, not a header: whoever includes it defines ZV_STRING first and
// undefines it afterwards.
//
// Numbers are grouped by what they belong to:
//   10000 validation of geometry    40000 line types    41000 values    42000 palette    43000 entities
//   45000 coordinates and units
//   46000 commands                  47000 loading       48000 saving    49000 undo       50000 drawing and tables
//   60000 titles of bars and dialogs
// clang-format off
ZV_STRING(10002, InvalidGeometry, "The geometry holds a value that is not a number")
ZV_STRING(10010, LinearNoPart, "Linear object must have at least 1 part")
ZV_STRING(10011, LinearShortPart, "Linear object parts must have at least 2 vertices")
ZV_STRING(10012, PolygonShortPart, "Linear Polygon object parts must have at least 3 vertices")
ZV_STRING(10013, LinearPartTable,
          "Linear object parts must follow one another and begin at vertex 16777215 or before; make several objects of it")
ZV_STRING(10014, LinearFirstPart, "The first part of a linear object must begin at its first vertex")
ZV_STRING(10015, LinearNotFinite, "Linear object vertex %u has a coordinate that is not a finite number")
ZV_STRING(10050, EmptyCompound, "A compound must hold at least one object")

ZV_STRING(40000, LineTypeDashed, "Dashed")
ZV_STRING(40001, LineTypeDotted, "Dotted")

ZV_STRING(41000, ByLayer, "By Layer")
ZV_STRING(41001, ByBlock, "By Block")
ZV_STRING(41002, Continuous, "Continuous")
ZV_STRING(41003, Unknown, "Unknown")
ZV_STRING(41004, BrushEmpty, "Empty")
ZV_STRING(41005, BrushSolid, "Solid")
ZV_STRING(41006, BrushCrossHatch, "Cross Hatch")

ZV_STRING(42000, ColorBlack, "Black")
ZV_STRING(42001, ColorRed, "Red")
ZV_STRING(42002, ColorYellow, "Yellow")
ZV_STRING(42003, ColorGreen, "Green")
ZV_STRING(42004, ColorCyan, "Cyan")
ZV_STRING(42005, ColorBlue, "Blue")
ZV_STRING(42006, ColorMagenta, "Magenta")
ZV_STRING(42007, ColorWhite, "White")
ZV_STRING(42008, ColorDarkGrey, "Dark Grey")
ZV_STRING(42009, ColorLightGrey, "Light Grey")
ZV_STRING(42010, HueRed, "Red")
ZV_STRING(42011, HueVermilion, "Vermilion")
ZV_STRING(42012, HueOrange, "Orange")
ZV_STRING(42013, HueAmber, "Amber")
ZV_STRING(42014, HueYellow, "Yellow")
ZV_STRING(42015, HueLime, "Lime")
ZV_STRING(42016, HueChartreuse, "Chartreuse")
ZV_STRING(42017, HueLeaf, "Leaf")
ZV_STRING(42018, HueGreen, "Green")
ZV_STRING(42019, HueEmerald, "Emerald")
ZV_STRING(42020, HueSpring, "Spring")
ZV_STRING(42021, HueJade, "Jade")
ZV_STRING(42022, HueCyan, "Cyan")
ZV_STRING(42023, HueSky, "Sky")
ZV_STRING(42024, HueAzure, "Azure")
ZV_STRING(42025, HueCobalt, "Cobalt")
ZV_STRING(42026, HueBlue, "Blue")
ZV_STRING(42027, HueUltramarine, "Ultramarine")
ZV_STRING(42028, HueViolet, "Violet")
ZV_STRING(42029, HuePurple, "Purple")
ZV_STRING(42030, HueMagenta, "Magenta")
ZV_STRING(42031, HueCerise, "Cerise")
ZV_STRING(42032, HueRose, "Rose")
ZV_STRING(42033, HueCrimson, "Crimson")
ZV_STRING(42034, ColorHue, "%s %d")
ZV_STRING(42035, ColorHuePale, "%s %d Pale")
ZV_STRING(42036, ColorGrey, "Grey %d")

ZV_STRING(43000, PropertyKind, "Kind")
ZV_STRING(43001, PropertyName, "Name")
ZV_STRING(43002, PropertyColor, "Color")
ZV_STRING(43003, PropertyLayer, "Layer")
ZV_STRING(43004, PropertyLineWidth, "Line width")
ZV_STRING(43005, PropertyLineType, "Line type")
ZV_STRING(43006, PropertyBrush, "Fill")
ZV_STRING(43007, PropertyExtent, "Extent")
ZV_STRING(43008, PropertyX, "X")
ZV_STRING(43009, PropertyY, "Y")
ZV_STRING(43010, PropertyZ, "Z")
ZV_STRING(43011, PropertyM, "M")
ZV_STRING(43012, PropertyAngle, "Angle")
ZV_STRING(43013, PropertyPointType, "Point type")
ZV_STRING(43014, PropertyPointCount, "Points")
ZV_STRING(43030, PropertyNotUnderstood, "\"%s\" is not understood here")
ZV_STRING(43031, PropertyNoSuchLayer, "There is no layer \"%s\"")
ZV_STRING(43032, PropertyOutOfRange, "The value is out of range")
ZV_STRING(43033, PropertyWrongType, "The value is of the wrong type")
ZV_STRING(43040, EntityNotInDrawing, "Entity is not in drawing")
ZV_STRING(43041, MultiPointEmpty, "A set of points must have at least 1 point")
ZV_STRING(43050, PropertyClosed, "Closed")
ZV_STRING(43051, PropertyPolygon, "Polygon")
ZV_STRING(43052, PropertyPartCount, "Parts")
ZV_STRING(43053, PropertyVertexCount, "Vertices")
ZV_STRING(43054, PropertyLength, "Length")
ZV_STRING(43055, PropertyArea, "Area")
ZV_STRING(43056, PropertyHasZ, "Heights")
ZV_STRING(43057, PropertyHasM, "Measures")
ZV_STRING(43058, PropertyStorage, "Storage")
ZV_STRING(43059, StorageForm, "%d-bit vertices, %u bytes")
ZV_STRING(43060, PolygonIsClosed, "The parts of a polygon are always closed")
ZV_STRING(43100, KindLine, "Line")
ZV_STRING(43101, KindPolyline, "Polyline")
ZV_STRING(43102, KindMultipartLine, "Multipart Line")
ZV_STRING(43103, KindPolygon, "Polygon")
ZV_STRING(43104, KindMultipartPolygon, "Multipart Polygon")

ZV_STRING(45000, DefaultUcs, "World")
ZV_STRING(45010, UnitKilometers, "kilometers")
ZV_STRING(45011, UnitMeters, "meters")
ZV_STRING(45012, UnitCentimeters, "centimeters")
ZV_STRING(45013, UnitMillimeters, "millimeters")
ZV_STRING(45014, UnitInch, "inch")
ZV_STRING(45015, UnitPoint, "point")
ZV_STRING(45020, UnitAbbrKilometers, "km")
ZV_STRING(45021, UnitAbbrMeters, "m")
ZV_STRING(45022, UnitAbbrCentimeters, "cm")
ZV_STRING(45023, UnitAbbrMillimeters, "mm")
ZV_STRING(45024, UnitAbbrInch, "in")
ZV_STRING(45025, UnitAbbrPoint, "pt")
ZV_STRING(45030, UnitPoints, "points")
ZV_STRING(45031, UnitDegrees, "degrees")
ZV_STRING(45032, UnitFeet, "feet")
ZV_STRING(45040, KernelMissing,
          "Polygon operations are not available: this program was built without a geometry kernel")

ZV_STRING(47000, LoadCorruptQuestion,
          "The file appears to be corrupt. Do you want to continue trying to load it?")
ZV_STRING(47001, LoadNewerTitle, "Version Change")
ZV_STRING(47002, LoadNewerQuestion,
          "This file has been saved with a newer version of Zelvan. \n You may open this file, but you will "
          "lose some information stored inside it. \n Do you want to continue loading this file?")
ZV_STRING(47003, LoadBadSignature, "The file does not have the right signature")
ZV_STRING(47004, LoadBadChecksum, "The checksum failed. The data is very likely corrupt.")
ZV_STRING(47005, LoadReadFailed, "An IO error occurred while trying to read the file.")
ZV_STRING(47006, LoadNoMemory, "Could not allocate enough memory to load the file")
ZV_STRING(47007, LoadBadHeader, "The file header cannot be read.")
ZV_STRING(47008, LoadRefused, "The file was not loaded: %s")
ZV_STRING(47009, LoadNeedsNewer,
          "%s was saved by a newer version of Zelvan (format %d) and needs at least format %d to be read; this "
          "program reads up to format %d. Update the program.")
ZV_STRING(47010, LoadNewerWarning,
          "The file was saved by a newer version of Zelvan (format %d); what this program (format %d) does not "
          "know is left out.")
ZV_STRING(47011, LoadUnreadable, "The %s at byte %I64d cannot be read: %s.")
ZV_STRING(47012, LoadSectionOutside,
          "The %s section is said to begin at byte %I64d, which is not between the header and the end at byte "
          "%I64d.")
ZV_STRING(47013, LoadBadEntityHead,
          "The entity record head is said to be %u bytes long; 12 to 4096 can be read.")
ZV_STRING(47014, LoadSolidInSolid, "The body of the file is said to hold a compressed body again.")
ZV_STRING(47015, LoadDamagedRecords,
          "%d records of kind %s are damaged and were left out; the first begins at byte %I64d%s.")
ZV_STRING(47016, LoadListEnds,
          "A list of objects breaks off at byte %I64d%s; %I64d of its objects were not loaded.")
ZV_STRING(47017, LoadInBlock, " of the content of the block at byte %I64d")
ZV_STRING(47018, LoadObjectLost, "%d object could not be loaded. It was generated by the module %s")
ZV_STRING(47019, LoadObjectsLost, "%d objects could not be loaded. They were generated by the module %s")
ZV_STRING(47020, LoadOutOfMemory, "There is not enough memory to load the drawing.")
ZV_STRING(47500, LoadNoFormat, "No file format is known for \"%s\". Choose a file with a known extension.")
ZV_STRING(47501, FileBusy, "The drawing is being loaded or saved already. Wait until that has ended.")
ZV_STRING(47502, LoadingDrawing, "Loading drawing")
ZV_STRING(47503, FileLoadErrors, "File Load Errors")
ZV_STRING(47504, OpenDrawing, "Open Drawing")
ZV_STRING(47505, DrawingFilter, "Zelvan Drawing")
ZV_STRING(47506, IncludeUnusedRecords, "Include Unused Records")
ZV_STRING(47507, CustomMerge, "Custom Merge")
ZV_STRING(47508, BackupFilter, "Zelvan Backup Drawing")
ZV_STRING(47510, OpenManyQuestion, "Are you sure you want to open %d files?")
ZV_STRING(47511, NoScreenRecorder,
          "\"%s\" is a recording of the screen, and this program cannot replay it.")
ZV_STRING(47512, IgnoringBitmap,
          "Ignoring bitmap %s, because unable to read embedded geographic coordinates\n")
ZV_STRING(47513, MediaMissing,
          "The media file '%s' referenced in the drawing could not be found. Would you like to locate it?")
ZV_STRING(47514, LocateMediaTitle, "Locate Media File")
ZV_STRING(47515, LoadIsEdited,
          "\"%s\" is being edited by process %s on %s; here it can be saved under another name only.")
ZV_STRING(47520, RecoverQuestion,
          "'%s' was not closed properly, or its last save did not come to its end. Found: %s. Do you want to "
          "open '%s' in its place?")
ZV_STRING(47521, RecoverUnfinished, "%s: a finished save of %s that did not get its name")
ZV_STRING(47522, RecoverBackup, "%s: the content before the last save, of %s")
ZV_STRING(47523, RecoverPeriodic, "%s: a periodic backup of %s")
ZV_STRING(47526, RecoverFailed, "\"%s\" could not be restored and is as it was: %s")

ZV_STRING(48000, SaveNoMemory,
          "A part of the drawing does not fit into memory while it is saved (%s). Save with a compression "
          "level below 6.")
ZV_STRING(48001, SaveOutOfMemory, "There is not enough memory to save the drawing.")
ZV_STRING(48002, SaveWriteFailed, "The file could not be written: %s")
ZV_STRING(48003, SaveEntityFailed, "The object %u (%s) could not be written and is missing in the file.")
ZV_STRING(48004, SaveNoPreview, "No preview picture could be made; the file is complete without it.")

ZV_STRING(48500, SaveNoFormat,
          "The drawing cannot be saved as \"%s\". Choose a name and a format that can be saved.")
ZV_STRING(48501, SavingDrawing, "Saving drawing")
ZV_STRING(48502, FileSaveErrors, "File SaveBusy Errors")
ZV_STRING(48503, SaveDrawing, "Save Drawing")
ZV_STRING(48504, SaveNeedsExtension, "Save formats need proper extension")
ZV_STRING(48505, ReplacingOriginal, "Replacing original file")
ZV_STRING(48506, SaveDone, "Done")
ZV_STRING(48507, SaveFailed,
          "\"%s\" could not be saved and is as it was: %s. Try again, or save to another place.")
ZV_STRING(48508, SaveCannotReplace, "the old file cannot be replaced: %s")
ZV_STRING(48509, SaveNotVerified, "what was written does not read back whole: %s")
ZV_STRING(48510, ShiftingBackups, "Shifting backup files")
ZV_STRING(48511, BackupPathUnwritable,
          "Autobackup of the Drawing cannot continue because the chosen path '%s' cannot be written to.\n")
ZV_STRING(48512, PeriodicBegins, "Periodic Auto Backup... ")
ZV_STRING(48513, PeriodicDone, "Done.\n")
ZV_STRING(48514, PurgingBackup, "Purging autobackup file %s because it has expired\n")
ZV_STRING(48515, PeriodicFailed, "Failed: %s\n")
ZV_STRING(48516, SaveBackupFailed, "The drawing was saved, but without the backup \"%s\": %s")
ZV_STRING(48517, SaveIsFolder, "\"%s\" is a folder. Give the name of a file in it.")
ZV_STRING(48518, SaveIsReadOnly,
          "\"%s\" is marked read-only, or you may only read it, and is as it was. Allow writing to it, or save under "
          "another name.")
ZV_STRING(48519, SaveFolderUnwritable,
          "\"%s\" cannot be saved: its folder \"%s\" does not exist or cannot be written to. Choose another folder.")
ZV_STRING(48520, SaveChangedQuestion,
          "The file '%s' was changed by another program since it was opened here. Do you want to overwrite it?")
ZV_STRING(48521, SaveChangedKept,
          "\"%s\" was changed by another program since it was opened here and was not overwritten. Save under "
          "another name.")
ZV_STRING(48522, SaveIsEdited,
          "\"%s\" is being edited by process %s on %s and was not overwritten. Close it there, or save under "
          "another name.")
ZV_STRING(48523, SaveFailedNew,
          "\"%s\" could not be saved, and what was written of it was deleted: %s. Try again, or save to another place.")
ZV_STRING(48524, SaveCensus, "it holds %I64d objects and the drawing %I64d")
ZV_STRING(48525, SaveNoDigest, "it has no digest")
ZV_STRING(48526, SaveFailedLeft,
          "\"%s\" could not be saved: %s. A part of it was written and could not be deleted again; do not use it. Try "
          "again, or save to another place.")
ZV_STRING(48527, SaveNameTooLong,
          "\"%s\" cannot be saved: the name is %d characters long, and file systems take %d. Choose a shorter name.")
ZV_STRING(48528, SaveUnknownReason, "the reason is not known")
ZV_STRING(48529, SaveIsSpecial,
          "\"%s\" is no file but a device, a pipe or links that lead nowhere, and is as it was. Give the name of a file.")

ZV_STRING(49000, NothingToUndo, "There is nothing to undo.")
ZV_STRING(49001, CannotUndo, "The previous operation cannot be undone")
ZV_STRING(49002, NothingToRedo,
          "There is nothing to redo. Certain operations, including all GIS actions, cannot be redone.")
ZV_STRING(49003, CannotRedo, "The operation '%s' cannot be redone.")
ZV_STRING(49004, UndoStopsHere, "Cannot undo beyond this point until the current command is complete.")
ZV_STRING(49005, UndoIsOffQuestion,
          "No undo information has been recorded because the undo buffer size is set to zero. Do you want to "
          "increase this value?")
ZV_STRING(49006, UndoneVerb, "Undo %s\n")
ZV_STRING(49007, RedoneVerb, "Redo %s\n")
ZV_STRING(49008, VerbFailed, "The operation '%s' failed and was taken back.")
ZV_STRING(49009, VerbFailedHalfWay,
          "The operation '%s' failed half way. The undo information was discarded; check the drawing and save it "
          "under another name.")
ZV_STRING(49010, UndoAdvice,
          "The operation '%s' needs %d KB to be undone, more than the %d KB that undo information may take. It "
          "can be undone, but nothing before it.")
ZV_STRING(49011, UndoAdviceKeep, "Keep it")
ZV_STRING(49012, UndoAdvicePurge, "Discard the undo information")
ZV_STRING(49013, UndoAdviceConfigure, "Change the amount of memory for undo information...")
ZV_STRING(49014, RolledBackInPart,
          "The operation could be taken back in part only: its first steps have left the undo information.")
ZV_STRING(49015, VerbRefused, "The operation '%s' changed nothing:")
ZV_STRING(49020, CreatedOnHiddenLayers, "%d objects were created on layers that are not visible.\n")
ZV_STRING(49021, CreatedTransparent,
          "The object created has a transparent pen and will not be visible unless selected\n")
ZV_STRING(49030, CollectingObjects, "Collecting objects")
ZV_STRING(49050, VerbCreate, "Create")
ZV_STRING(49051, VerbErase, "Erase")
ZV_STRING(49052, VerbModify, "Modify")
ZV_STRING(49053, VerbReplace, "Replace")
ZV_STRING(49054, VerbConvert, "Convert")
ZV_STRING(49055, VerbSeveral, "Several operations")
ZV_STRING(49060, VerbMoveToLayer, "Move to Layer")
ZV_STRING(49061, VerbPropertyChange, "Change Properties")
ZV_STRING(49062, VerbEntTiny, "Change Attributes")
ZV_STRING(49063, VerbTextChange, "Change Text")
ZV_STRING(49064, VerbTransform, "Transform")
ZV_STRING(49065, VerbDrawOrder, "Draw Order")
ZV_STRING(49066, VerbChangeSS, "Change Selection")
ZV_STRING(49067, VerbMoveGrip, "Move Grip")
ZV_STRING(49068, VerbRecordNew, "New Record")
ZV_STRING(49069, VerbRecordModify, "Edit Record")
ZV_STRING(49070, VerbRecordErase, "Delete Record")
ZV_STRING(49080, RefusedNoLayer, "there is no layer to put the objects on.")
ZV_STRING(49081, RefusedMove, "objects that are on no layer cannot go to \"%s\".")
ZV_STRING(49082, RefusedCoordinates, "%d objects would get coordinates that are too large or no numbers.")
ZV_STRING(49083, RefusedRecordName, "\"%s\" cannot be a name there; choose another.")
ZV_STRING(49084, RefusedNoRecord, "the record is not in its table any more.")
ZV_STRING(49085, RefusedRecord, "the table does not take the record.")
ZV_STRING(49086, RefusedGrip, "the grips cannot go there.")
ZV_STRING(49087, RefusedText, "there is no such text there.")
ZV_STRING(49088, RefusedErase, "there is no such record, or the drawing cannot do without it.")

ZV_STRING(50500, FatalErrorSave, "A fatal error has occured. Would you like to try to save your drawing?")
ZV_STRING(50501, OutOfSync,
          "Fatal Error: Database has become out of sync. Forced crash initiated to avoid data loss, "
          "please contact KTR Support immediately!")
ZV_STRING(50502, EntityIsErased, "The object is erased")
ZV_STRING(50503, LayerIsLocked, "The layer \"%s\" is locked")
ZV_STRING(50504, VerbCount, "Number of verbs = %d\n")
ZV_STRING(50505, VerbMemory, "Amount of memory used by verbs = %d KB\n")
ZV_STRING(50800, TableHeadDamaged, "The head of the table section is damaged; what follows it was not loaded.")
ZV_STRING(50801, TableDamaged,
          "The table \"%s\" is damaged from byte %I64d on; some of its records were not loaded.")
ZV_STRING(50802, TableRecordDamaged, "A record of the table \"%s\" at byte %I64d is damaged and was left out.")
ZV_STRING(50803, TableContentsDamaged, "The contents of \"%s\" were not loaded completely.")
ZV_STRING(50804, TableRecovered, "Recovered")
ZV_STRING(50805, LayerNotLoaded,
          "The layer \"%s\" could not be loaded from its file; the drawing was not saved, so that nothing is lost.")
ZV_STRING(50806, TableFileUnreadable, "The records could not be read from %s: %s")
ZV_STRING(50807, TableAttributesDamaged, "Attribute values of \"%s\" were not loaded completely.")
// clang-format on
