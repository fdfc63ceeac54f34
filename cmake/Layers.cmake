# The house from the ground floor up: a layer sees what stands before it in this list, and nothing else.
# Linking (TarquelTargets.cmake) and the include check (CheckLayering.cmake) both read it.
set(TQ_LAYERS
    TQPlatform
    TQCore
    TQFrames
    TQPersistence
    TQDescription
    TQVision
    TQPipeline
    TarquelApp)
