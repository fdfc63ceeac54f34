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

# The rooms of a layer that has several, in the same order: a room sees what lies in the layer's own folder, and the rooms
# before it. What lies in the folder itself sees none of them.
set(TQ_ROOMS_TQPlatform Concurrency Text FileSystem Process JSON Media Network)
set(TQ_ROOMS_TQDescription Search Semantic Library FolderIndex Export)
