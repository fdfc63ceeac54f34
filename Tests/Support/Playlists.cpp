#include "Support/Playlists.hpp"

namespace tq::test {

std::vector<Playlist> playlistsTo(const std::string& target) {
  return {
      {"HLS", "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:1\n#EXT-X-MEDIA-SEQUENCE:0\n#EXTINF:1,\n" + target +
                  "\n#EXT-X-ENDLIST\n"},
      {"HLSMaster", "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1\n" + target + "\n"},
      {"HLSKey", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXT-X-KEY:METHOD=AES-128,URI=\"" + target +
                     "\"\n#EXTINF:1,\ndata:,x\n#EXT-X-ENDLIST\n"},
      {"Concat", "ffconcat version 1.0\nfile '" + target + "'\n"},
      {"DASH",
       "<?xml version=\"1.0\"?>\n<MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\" "
       "mediaPresentationDuration=\"PT1S\" minBufferTime=\"PT1S\" "
       "profiles=\"urn:mpeg:dash:profile:isoff-on-demand:2011\"><Period><AdaptationSet contentType=\"video\">"
       "<Representation id=\"1\" bandwidth=\"1\" codecs=\"avc1\" mimeType=\"video/mp4\"><BaseURL>" +
           target + "</BaseURL><SegmentBase/></Representation></AdaptationSet></Period></MPD>\n"},
      {"SDP", "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\ns=x\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\na=control:" + target +
                  "\r\nm=video 50000 RTP/AVP/TCP 96\r\na=rtpmap:96 H264/90000\r\na=control:" + target + "\r\n"},
      {"ASX", "<ASX version=\"3.0\"><Entry><Ref href=\"" + target + "\"/></Entry></ASX>\n"},
      {"PLS", "[playlist]\nFile1=" + target + "\nNumberOfEntries=1\n"},
      {"IMF",
       "<?xml version=\"1.0\"?>\n<CompositionPlaylist xmlns=\"http://www.smpte-ra.org/schemas/2067-3/2016\"><Id>"
       "urn:uuid:0eb3d1b9-b77b-4d3f-bbe5-7c69b15dca84</Id><EditRate>25 1</EditRate><SegmentList/>"
       "</CompositionPlaylist>\n"},
      {"QuickTimeLink",
       "<?xml version=\"1.0\"?>\n<?quicktime type=\"application/x-quicktime-media-link\"?>\n<embed src=\"" + target +
           "\"/>\n"},
      {"RealMedia", target + "\n"},
  };
}

}  // namespace tq::test
